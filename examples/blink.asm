; Blinks an LED at port 1, bit 0, about once a second at 12 MHz: the program in blink.hex.
        ORG   0000h
        LJMP  start             ; 02 00 30
        ORG   000Bh
        RETI                    ; 32        timer 0 interrupt, not used
        ORG   0030h
start:  MOV   SP,#2Fh           ; 75 81 2F
loop:   CPL   P1.0              ; B2 90
        LCALL wait              ; 12 00 3B
        SJMP  loop              ; 80 F9
        NOP                     ; 00
wait:   MOV   R7,#8             ; 7F 08
outer:  MOV   R6,#250           ; 7E FA
middle: MOV   R5,#250           ; 7D FA
inner:  DJNZ  R5,inner          ; DD FE
        DJNZ  R6,middle         ; DE FA
        DJNZ  R7,outer          ; DF F6
        RET                     ; 22
        ORG   0FE0h
        DB    "fliglaf example: blink, port 1.0"

// The contract with the host: every value that passes between it and the library.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "shared/shared_variable.h"

namespace fliglaf {

/// The 59 shared variables of one instance number. The rows below are the table: opening,
/// releasing, recording and docs/host.md go by them, in this order. A row is name, elements, bytes,
/// meaning.
class SharedVariables {
 private:
  std::vector<SharedVariable*> table_;

 public:
  SharedVariables() = default;
  SharedVariables(const SharedVariables&) = delete;
  SharedVariables& operator=(const SharedVariables&) = delete;

  // clang-format off
  ByteVariable    quorinibuf1             {table_, {"quorinibuf1",             20,    400,   "0: the byte that a bulk read into the data buffer sets aside while it waits for the end mark"}};
  ByteVariable    quorinubuf1             {table_, {"quorinubuf1",             20,    400,   "command buffer: every USB packet is built here before it is sent; 4 to 15: the shifter configuration"}};
  ByteVariable    quorinubuf2             {table_, {"quorinubuf2",             300,   400,   "host side"}};
  ByteVariable    quorinibuf2             {table_, {"quorinibuf2",             33000, 33000, "captured bytes of one block, as a bulk read brought them"}};
  BooleanVariable quorinusbpip0readresult {table_, {"quorinusbpip0readresult", 2,     400,   "host side"}};
  ByteVariable    quorinusbpip2readresult {table_, {"quorinusbpip2readresult", 2,     400,   "0: status of the running bulk read, written by the transfer library (2 = done, above 3 = failed)"}};
  ByteVariable    quorinarrybuf           {table_, {"quorinarrybuf",           210,   400,   "host side"}};
  StringVariable  quorinprgnote           {table_, {"quorinprgnote",           30,    400,   "the host's text fragments: 0 and 1 before and after an operation name; 2 success ending; 3 failure ending; 4 line of a stopped operation; 5 and 6 header lines of a compare listing; 7 and 8 prompt and title of the question after a failed blank check; 9 and 10 labels of the signature bytes; 12 line of result 3"}};
  ByteVariable    quorinprgresult         {table_, {"quorinprgresult",         3,     400,   "0: result of the running or last operation, and the stop request (2); 1: the request (0 = automatic sequence, 1 = nothing, 2 and above = that operation); 2: not used"}};
  LongVariable    quorinwltbigendbuf      {table_, {"quorinwltbigendbuf",      4,     400,   "0: first device address of the operation; 1: last device address; 2: buffer index of the first address"}};
  ByteVariable    quorinbvccpin           {table_, {"quorinbvccpin",           4,     40,    "0 and 1: socket pins that receive VCC (0 = no pin)"}};
  ByteVariable    quorinbgndpin           {table_, {"quorinbgndpin",           4,     40,    "0 and 1: socket pins tied to ground (0 = no pin)"}};
  ByteVariable    quorinbvpppin           {table_, {"quorinbvpppin",           4,     40,    "0: socket pin that receives VPP (0 = no pin)"}};
  IntegerVariable quorinbvcc              {table_, {"quorinbvcc",              4,     40,    "0: device VCC in units of 10 mV (500 = 5.00 V)"}};
  IntegerVariable quorinbvcch             {table_, {"quorinbvcch",             4,     40,    "0: parameter of the family: for several the size of the data memory at the end of the device image, for the parallel configuration writer the number of configuration words minus one"}};
  IntegerVariable quorinbvpp              {table_, {"quorinbvpp",              4,     40,    "0: programming voltage in units of 10 mV"}};
  LongVariable    quorinbuflength         {table_, {"quorinbuflength",         4,     40,    "0: length of the device data in bytes; sizes quorinibuffer"}};
  LongVariable    quorinLanguage          {table_, {"quorinLanguage",          4,     40,    "0: base of the user's language in the string table (0, 3000, 6000, ... 21000)"}};
  IntegerVariable quorinpagelength        {table_, {"quorinpagelength",        4,     40,    "0: page size of the device in bytes or words"}};
  IntegerVariable quorinmodeltype         {table_, {"quorinmodeltype",         4,     40,    "0: programmer model; 5 and 6 have their programming voltage set by the library"}};
  ByteVariable    quorinwfig              {table_, {"quorinwfig",              6,     40,    "host side"}};
  BooleanVariable quorinchipidtestmode    {table_, {"quorinchipidtestmode",    4,     40,    "0: true = check the device signature before the operation"}};
  LongVariable    quorinpwte              {table_, {"quorinpwte",              4,     40,    "0: write time; scales the write delays of the algorithms"}};
  ByteVariable    quorinfigmode           {table_, {"quorinfigmode",           4,     40,    "0: adapter mode handed to the programmer at start-up"}};
  IntegerVariable quorinchippin           {table_, {"quorinchippin",           4,     40,    "0: pin count of the device package"}};
  IntegerVariable quorinwretry            {table_, {"quorinwretry",            4,     40,    "0: retry count of the programming loops; more than 1000 are 1000"}};
  ByteVariable    quorinprgmode           {table_, {"quorinprgmode",           4,     40,    "0: device family, 1 to 16; 1: progress in percent, set to 0 and then 1 at the start of an operation; 2: set to 0 at the start of an operation"}};
  ByteVariable    quorinwordmode          {table_, {"quorinwordmode",          4,     40,    "host side"}};
  ByteVariable    quorinwoption           {table_, {"quorinwoption",           4,     40,    "0: device variant within the family (fuse layout, line assignment, register set)"}};
  ByteVariable    quorinwautonum          {table_, {"quorinwautonum",          4,     40,    "0: number of steps of the automatic sequence (0 = program only)"}};
  LongVariable    quorintlength           {table_, {"quorintlength",           4,     40,    "0: size of the device memory in addresses; configuration bytes lie relative to it"}};
  IntegerVariable quorincompid            {table_, {"quorincompid",            4,     40,    "0: expected manufacturer code of the signature"}};
  IntegerVariable quorintypeid            {table_, {"quorintypeid",            4,     40,    "0: expected device code of the signature"}};
  ByteVariable    quorinwsign             {table_, {"quorinwsign",             4,     40,    "host side"}};
  ByteVariable    quorinbuftype           {table_, {"quorinbuftype",           4,     40,    "0: value of an erased cell in a blank check (1 = 0x00, otherwise 0xFF)"}};
  ByteVariable    quorinautoprg           {table_, {"quorinautoprg",           11,    40,    "steps of the automatic sequence, each an operation code"}};
  ByteVariable    quorinrambknum          {table_, {"quorinrambknum",          4,     40,    "host side"}};
  StringVariable  quorinMainmnuPrg        {table_, {"quorinMainmnuPrg",        20,    400,   "operation names, by operation code"}};
  StringVariable  quorinMainRtstr         {table_, {"quorinMainRtstr",         3,     40,    "0: the log, to which the library appends lines, each ended by a line feed; 1: listing of the differences of a compare"}};
  IntegerVariable quorinubuflg            {table_, {"quorinubuflg",            3,     40,    "0: set to 16368 by the USB engine at the start of every request; 1: counts the blocks that could not be fetched from the programmer and were judged by what quorinibuf2 held"}};
  LongVariable    quorinramlg             {table_, {"quorinramlg",             3,     40,    "host side"}};
  LongVariable    quorinwlverifyvcc       {table_, {"quorinwlverifyvcc",       3,     40,    "0: verify at VCC plus and minus this many times 5 %; 0 = at nominal VCC only"}};
  StringVariable  quorinalgo              {table_, {"quorinalgo",              4,     40,    "host side"}};
  ByteVariable    quorinfigvol            {table_, {"quorinfigvol",            4,     40,    "host side"}};
  ByteVariable    quorinwwarnno           {table_, {"quorinwwarnno",           4,     40,    "host side"}};
  StringVariable  quorinspdter            {table_, {"quorinspdter",            4,     40,    "host side"}};
  ByteVariable    quorinmenu              {table_, {"quorinmenu",              14,    40,    "host side"}};
  ByteVariable    quorinorder             {table_, {"quorinorder",             10,    400,   "host side"}};
  StringVariable  quorinpintestmap        {table_, {"quorinpintestmap",        3,     40,    "host side"}};
  ByteVariable    quorinwordmode0         {table_, {"quorinwordmode0",         3,     40,    "host side"}};
  StringVariable  quorinppin              {table_, {"quorinppin",              13,    40,    "host side"}};
  LongVariable    quorinserial            {table_, {"quorinserial",            3,     40,    "host side"}};
  ByteVariable    quorintypeformat        {table_, {"quorintypeformat",        3,     40,    "host side"}};
  ByteVariable    quorinICnum             {table_, {"quorinICnum",             80,    40,    "host side"}};
  StringVariable  quorinwcompany          {table_, {"quorinwcompany",          4,     40,    "host side"}};
  StringVariable  quorinwtype             {table_, {"quorinwtype",             3,     40,    "host side"}};
  BooleanVariable quorinusbable           {table_, {"quorinusbable",           3,     40,    "host side"}};
  // The data-buffer group: fixed names, opened by itself, the first sized by quorinbuflength(0).
  ByteVariable    quorinibuffer           {table_, {"quorinibuffer",           0,     0,     "the device image: data to program, data read, configuration bytes at its end; quorinbuflength(0) + 200 elements"}};
  ByteVariable    quorinibuffer66         {table_, {"quorinibuffer66",         10,    40,    "host side"}};
  // clang-format on

  /// All rows in table order.
  [[nodiscard]] std::span<SharedVariable* const> table() const { return table_; }
  /// The rows whose block names end in the instance number.
  [[nodiscard]] std::span<SharedVariable* const> main_group() const;

  /// Opens the main group under an instance number, -32,768 to 32,767. `on_failure` is called for
  /// each block that can be neither opened nor created; the others are opened regardless.
  void OpenMainGroup(std::int16_t instance, const std::function<void()>& on_failure);
  /// Opens the data-buffer group; `length` is bytes and elements of quorinibuffer.
  void OpenDataBuffers(std::int32_t length, const std::function<void()>& on_failure);
  /// Length of quorinibuffer for the data length in quorinbuflength(0), in bytes.
  [[nodiscard]] std::int32_t DataBufferLength() const;
  /// Empties every text, for the side that made the blocks: closing a block does not free the texts
  /// that it refers to.
  void EmptyTexts();
  void ReleaseMainGroup();
  void ReleaseDataBuffers();
};

}  // namespace fliglaf

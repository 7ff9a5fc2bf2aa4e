// A library of forwarders: its .def file sends each call on to iohelper.dll, which holds the bench.

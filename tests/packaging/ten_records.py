"""Reads ten records by the shared library alone."""
import ctypes
import sys

Poll = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.POINTER(ctypes.c_char))
Output = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_char_p, ctypes.c_int)
READOUT_CSV = 3

texts = []


@Poll
def no_input(line):
    line[0] = b"\0"
    return 0


@Output
def take(text, more):
    texts.append(text.decode())
    return 0


library = ctypes.CDLL(sys.argv[1])
library.stm_open()
library.stm_read_records(10, READOUT_CSV, no_input, take)
library.stm_close()

header, *records = "".join(texts).splitlines()
place = header.split(";").index('"rel_t"')
numbers = [int(record.split(";")[place]) for record in records]
print(f"{len(numbers)} records, {numbers[0]} to {numbers[-1]}")

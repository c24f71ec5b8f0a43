"""What a crash dump of Windows (a minidump) says about one module: where it lay, which build it is, and where in it the
process stopped.
"""
import struct
from pathlib import Path

THREADS, MODULES, EXCEPTION, MEMORY_64 = 3, 4, 6, 9
AMD64_STACK_POINTER, AMD64_INSTRUCTION_POINTER = 0x98, 0xF8


class DumpError(Exception):
    """The file is no dump, or has nothing about the module."""


def build_id(codeview):
    """The build id in a CodeView record, as 32 hexadecimal digits; None when the record has none."""
    return codeview[4:20].hex() if codeview[:4] == b"RSDS" else None


class Module:
    """One module of a dump."""

    def __init__(self, dump, offset):
        self.base, self.size, _, self.timestamp, name = dump.unpack("<QIIII", offset)
        length, = dump.unpack("<I", name)
        self.path = dump.bytes(name + 4, length).decode("utf-16-le")
        self.name = self.path.rsplit("\\", 1)[-1].rsplit("/", 1)[-1].lower()
        self.build_id = build_id(dump.bytes(*reversed(dump.unpack("<II", offset + 76))))

    def offset_of(self, address):
        """Where the address lies behind the module's start; None outside of it."""
        return address - self.base if self.base <= address < self.base + self.size else None


class Dump:
    """A minidump of a 64-bit process. Sizes and places in the file are checked where they are used."""

    def __init__(self, path):
        self._data = Path(path).read_bytes()
        signature, _, count, directory = self.unpack("<4sIII", 0)
        if signature != b"MDMP":
            raise DumpError("not a crash dump of Windows")
        self._streams = {}
        for i in range(count):
            kind, size, place = self.unpack("<III", directory + 12 * i)
            self._streams.setdefault(kind, (place, size))
        self.modules = [Module(self, at) for at in self._records(MODULES, 108)]

    def unpack(self, layout, offset):
        try:
            return struct.unpack_from(layout, self._data, offset)
        except struct.error as error:
            raise DumpError("the dump is cut off") from error

    def bytes(self, offset, size):
        return self._data[offset:offset + size]

    def _records(self, kind, size):
        """Places of the records of a stream that is a counted array."""
        if kind not in self._streams:
            return []
        place = self._streams[kind][0]
        count, = self.unpack("<I", place)
        return [place + 4 + size * i for i in range(count)]

    def module(self, name):
        for module in self.modules:
            if module.name == name.lower():
                return module
        raise DumpError(f"{name} was not loaded; the modules are: " + ", ".join(m.name for m in self.modules))

    def exception(self):
        """(thread, code, address) of the exception that ended the process; None when the dump was taken otherwise."""
        if EXCEPTION not in self._streams:
            return None
        place = self._streams[EXCEPTION][0]
        thread, _, code, _, _, address = self.unpack("<IIIIQQ", place)
        return thread, code, address

    def _context(self):
        """Place of the registers at the exception; None without one."""
        if EXCEPTION not in self._streams:
            return None
        return self.unpack("<II", self._streams[EXCEPTION][0] + 160)[1]

    def stack(self, thread):
        """The 64-bit words on the thread's stack, the innermost first."""
        for at in self._records(THREADS, 48):
            if self.unpack("<I", at)[0] != thread:
                continue
            start, size, place = self.unpack("<QII", at + 24)
            context = self._context() or self.unpack("<II", at + 40)[1]
            pointer, = self.unpack("<Q", context + AMD64_STACK_POINTER)
            words = self.bytes(place, size) or self._memory(start, pointer)
            words = words[max(0, pointer - start):]
            return [word for word, in struct.iter_unpack("<Q", words[:len(words) // 8 * 8])]
        return []

    def _memory(self, start, pointer):
        """From start on, out of a dump with all memory."""
        if MEMORY_64 not in self._streams:
            return b""
        place = self._streams[MEMORY_64][0]
        count, offset = self.unpack("<QQ", place)
        for i in range(count):
            address, size = self.unpack("<QQ", place + 16 + 16 * i)
            if address <= pointer < address + size:
                return self.bytes(offset + start - address if start >= address else offset, size)
            offset += size
        return b""

"""Says where in the module's sources a crash happened: tools/symbolize.sh --help"""
import argparse
import os
import re
import struct
import subprocess
import sys
from pathlib import Path

import minidump

BINUTILS = "x86_64-w64-mingw32-"
HERE = Path(__file__).resolve().parent
SYMBOLS = HERE / "qxfaxui.dll.debug"
if not SYMBOLS.exists():
    SYMBOLS = HERE.parent / "build/release/bin/qxfaxui.dll.debug"
STACK_WORDS = 4096  # as much of a stack as is worth reading


class Symbols:
    """The file NAME.debug that was made together with the module NAME."""

    def __init__(self, path):
        self.path = Path(path)
        self.module = self.path.name.removesuffix(".debug")
        if not self.path.is_file():
            raise minidump.DumpError(f"no symbols at {path}: name them with --symbols")
        data = self.path.read_bytes()
        header, = struct.unpack_from("<I", data, 0x3C)
        self.timestamp, = struct.unpack_from("<I", data, header + 8)
        self.base, = struct.unpack_from("<Q", data, header + 24 + 24)
        record = data.find(b"RSDS")
        self.build_id = minidump.build_id(data[record:record + 24]) if record >= 0 else None

    def frames(self, offset):
        """(function, place) of the address that far behind the module's start, and of what it is inlined into."""
        lines = subprocess.run(
            [BINUTILS + "addr2line", "-f", "-C", "-i", "-e", self.path, hex(self.base + offset)],
            check=True, capture_output=True, text=True).stdout.splitlines()
        return [(function, self._from_the_top(place)) for function, place in zip(lines[::2], lines[1::2])]

    @staticmethod
    def _from_the_top(place):
        """The place as addr2line names it, without what leads from the build folder to the sources."""
        path = os.path.normpath(re.sub(r" \(discriminator \d+\)$", "", place))
        return re.sub(r"^(\.\./)+", "", path)

    def belong_to(self, module):
        """False when the module of a dump is another build. A dump without a build id has the time of the build."""
        if module.build_id is not None and self.build_id is not None:
            return module.build_id == self.build_id
        return module.timestamp == self.timestamp


def show(symbols, offset, note, call=False):
    # A return address belongs to what comes after the call.
    for function, place in symbols.frames(offset - 1 if call else offset):
        print(f"{note}{symbols.module}+{offset:#x}  {function}  {place}")


def explain(dump, symbols):
    module = dump.module(symbols.module)
    if not symbols.belong_to(module):
        raise minidump.DumpError(f"{symbols.path} belongs to another build than the dump: the dump has build id "
                                 f"{module.build_id or '-'}, time {module.timestamp:#x}; the symbols have "
                                 f"{symbols.build_id or '-'}, {symbols.timestamp:#x}")
    exception = dump.exception()
    if exception is None:
        raise minidump.DumpError("the dump tells of no exception")
    thread, code, address = exception
    offset = module.offset_of(address)
    print(f"exception {code:#010x} in thread {thread}")
    if offset is not None:
        show(symbols, offset, "at   ")
    else:
        names = [m.name for m in dump.modules if m.offset_of(address) is not None]
        print(f"at   {address:#x} in {names[0] if names else 'no module'}")
    # Whoever called: some of these may be left over from calls that have returned.
    for word in dump.stack(thread)[:STACK_WORDS]:
        offset = module.offset_of(word)
        if offset is not None and symbols.frames(offset - 1)[0][0] != "??":
            show(symbols, offset, "from ", call=True)


def main():
    parser = argparse.ArgumentParser(
        prog="tools/symbolize.sh", formatter_class=argparse.RawDescriptionHelpFormatter,
        description="Names function, file and line of a crash in the module.",
        epilog="""\
An ADDRESS is counted from the module's start: the "Fault offset" of Windows' event log, or what debuggers show as
qxfaxui+0x1234. From a DUMP (any minidump of Windows) come the place of the exception and, as far as they lie in the
module, the callers that its stack shows.""")
    parser.add_argument("what", nargs="+", metavar="DUMP|ADDRESS")
    parser.add_argument("--symbols", default=SYMBOLS, metavar="FILE",
                        help="the module's .debug file (default: the one beside this script, or of the release build)")
    options = parser.parse_args()
    try:
        symbols = Symbols(options.symbols)
        for what in options.what:
            if Path(what).is_file():
                explain(minidump.Dump(what), symbols)
            elif address := re.fullmatch(r"(?:\w+(?:\.dll)?\+)?(?:0x)?([0-9a-fA-F`]+)", what):
                show(symbols, int(address[1].replace("`", ""), 16), "")
            else:
                raise minidump.DumpError(f"{what}: neither a file nor an address")
    except minidump.DumpError as error:
        print(f"symbolize.sh: {error}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())

"""The two archives as those unpack them who develop a driver, and those who install one.

usage: packages_test.py CPACK_CONFIG INF_READER
"""
import hashlib
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import zipfile
from pathlib import Path

SOURCES = Path(os.environ["QX_SOURCE_DIR"])
WINE = os.environ["QX_WINE"]
CONFIG, INF_READER = sys.argv[1:3]
MODULE_FILES = {"qxfaxui.dll", "QXTEXT64.DLL", "QXFAXHLP.CAB", "QXZHLF1.CHM"}
VERSION = ".".join(re.findall(r"define QXFAX_VERSION_[A-Z]+ (\d+)",
                              (SOURCES / "include/qxfax/version.h").read_text()))
WINDOWS_HEADERS = Path("/usr/include/wine/wine")
WINDOWS_LIBRARIES = Path("/usr/x86_64-w64-mingw32/lib")

# The README's example, called as a program does that has no printer: nothing is shown, and nobody has pressed Send.
BEFORE = """
static int submitted;
static void SubmitFax(FaxJobData* job)
{
    (void)job;
    submitted = 1;
}
static void Example(HANDLE printer)
{
"""
AFTER = """
}
int main(void)
{
    Example(NULL);
    return submitted ? 1 : 42;
}
"""


def run(*command, **options):
    done = subprocess.run([str(part) for part in command], capture_output=True, text=True, **options)
    assert done.returncode == 0, f"{command}\n{done.stdout}{done.stderr}"
    return done.stdout


def example():
    block = re.search(r"^```c\n(.*?)^```$", (SOURCES / "README.md").read_text(), re.DOTALL | re.MULTILINE)[1]
    lines = block.splitlines()
    return "\n".join([line for line in lines if line.startswith("#")] + [BEFORE] +
                     [line for line in lines if not line.startswith("#")] + [AFTER])


class Packages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = Path(folder.name)
        run("cpack", "-G", "ZIP", "--config", CONFIG, "-B", cls.folder / "packages")
        cls.names = {}
        for archive in (cls.folder / "packages").glob("*.zip"):
            with zipfile.ZipFile(archive) as packed:
                cls.names[archive.name] = {name for name in packed.namelist() if not name.endswith("/")}
            run("unzip", "-q", archive, "-d", cls.folder / archive.stem)  # keeps what may be run
        cls.sdk = cls.folder / f"qxfax-sdk-{VERSION}"
        cls.redist = cls.folder / f"qxfax-redist-{VERSION}"

    def consumer(self, name, suffix):
        folder = self.folder / name
        folder.mkdir()
        (folder / f"main.{suffix}").write_text(example())
        return folder

    def starts(self, program):
        """The program finds the module beside it, and its call returns."""
        for file in MODULE_FILES:
            shutil.copy(self.redist / file, program.parent)
        self.assertEqual(subprocess.run([WINE, program]).returncode, 42)

    def test_are_two_and_complete(self):
        self.assertEqual(self.names[f"qxfax-redist-{VERSION}.zip"], {
            *MODULE_FILES, "NOTICES.txt", "qxfax-redist.spdx.json"})
        sdk = self.names[f"qxfax-sdk-{VERSION}.zip"]
        wanted = {f"bin/{name}" for name in MODULE_FILES | {"faxhost.exe", "QXFAXDRV.DLL", "qxfaxadm.exe"}} | {
            "include/qxfax/send_fax.h", "include/qxfax/version.h", "lib/qxfaxui.lib", "lib/libqxfaxui.dll.a",
            "lib/qxfaxui.def", "lib/cmake/qxfax/qxfaxConfig.cmake", "lib/cmake/qxfax/qxfaxConfigVersion.cmake",
            "symbols/qxfaxui.dll.debug", "symbols/symbolize.sh", "docs/driver_developers.md", "docs/record_layout.txt",
            "driver/qxfax.inf", "NOTICES.txt", "CHANGELOG.md", "qxfax-sdk.spdx.json"}
        self.assertEqual(wanted - sdk, set())
        self.assertEqual(len(self.names), 2)

    def test_sdk_is_found_by_cmake(self):
        folder = self.consumer("with_cmake", "c")
        (folder / "CMakeLists.txt").write_text(f"""
cmake_minimum_required(VERSION 3.10)
project(consumer C)
find_package(qxfax {VERSION} REQUIRED)
add_executable(consumer main.c)
target_link_libraries(consumer PRIVATE qxfax::qxfaxui)
""")
        run("cmake", "-G", "Ninja", "-S", folder, "-B", folder / "build", f"-DCMAKE_PREFIX_PATH={self.sdk}",
            f"-DCMAKE_TOOLCHAIN_FILE={SOURCES}/cmake/mingw-w64.cmake")
        run("cmake", "--build", folder / "build")
        self.starts(folder / "build/consumer.exe")

    def links_as_microsofts_tools_do(self, name, suffix, *options):
        folder = self.consumer(name, suffix)
        run("clang", "--driver-mode=cl", "--target=x86_64-pc-windows-msvc", "/nologo", "/c", "/W4", "/WX", "/GS-", *options,
            f"-imsvc{WINDOWS_HEADERS}/msvcrt", f"-imsvc{WINDOWS_HEADERS}/windows",
            "-D_InterlockedCompareExchange128=InterlockedCompareExchange128_",  # clang has one of that name
            f"-I{self.sdk}/include", f"/Fo{folder}/main.obj", folder / f"main.{suffix}")
        run("lld-link", "/nologo", "/entry:main", "/subsystem:console", "/nodefaultlib", f"/out:{folder}/consumer.exe",
            folder / "main.obj", self.sdk / "lib/qxfaxui.lib", WINDOWS_LIBRARIES / "libkernel32.a",
            WINDOWS_LIBRARIES / "libmsvcrt.a")
        self.starts(folder / "consumer.exe")

    def test_sdk_links_with_the_import_library_in_c(self):
        self.links_as_microsofts_tools_do("in_c", "c")

    def test_sdk_links_with_the_import_library_in_cpp(self):
        self.links_as_microsofts_tools_do("in_cpp", "cpp", "/std:c++17")

    def test_symbols_are_those_of_the_module(self):
        def build_id(path):
            data = path.read_bytes()
            return data[data.index(b"RSDS"):][4:20]
        self.assertEqual(build_id(self.sdk / "symbols/qxfaxui.dll.debug"), build_id(self.redist / "qxfaxui.dll"))
        self.assertEqual((self.sdk / "bin/qxfaxui.dll").read_bytes(), (self.redist / "qxfaxui.dll").read_bytes())
        symbolize = run(self.sdk / "symbols/symbolize.sh", "0x1500")  # finds the symbols beside it
        self.assertTrue(symbolize.startswith("qxfaxui.dll+0x1500"), symbolize)

    def test_bills_of_materials_fit_the_files(self):
        for folder, binaries in ((self.redist, self.redist), (self.sdk, self.sdk / "bin")):
            bom, = folder.glob("*.spdx.json")
            document = json.loads(bom.read_text())
            listed = {entry["fileName"].removeprefix("./"): entry["checksums"][1]["checksumValue"]
                      for entry in document["files"]}
            self.assertEqual(listed, {path.name: hashlib.sha256(path.read_bytes()).hexdigest()
                                      for path in binaries.iterdir() if path.name in listed})
            self.assertLessEqual(MODULE_FILES, set(listed))
            packages = {package["SPDXID"]: package for package in document["packages"]}
            linked = [relation["relatedSpdxElement"] for relation in document["relationships"]
                      if relation["relationshipType"] == "STATIC_LINK"]
            self.assertLessEqual({"SPDXRef-gcc-runtime", "SPDXRef-mingw-w64-runtime"}, set(linked))
            for library in linked:
                self.assertRegex(packages[library]["versionInfo"], r"^(\d+:)?\d[\w.+~-]+$")

    def test_driver_package_installs_what_the_redist_has(self):
        inf = self.sdk / "driver/qxfax.inf"
        self.assertNotIn("@", inf.read_text())
        facts = run(WINE, INF_READER, "Z:" + str(inf)).splitlines()
        copied = {fact.removeprefix("copied: ") for fact in facts if fact.startswith("copied: ")}
        on_disk = {re.match(r"SourceDisksFiles.amd64: (\S+)", fact)[1] for fact in facts
                   if fact.startswith("SourceDisksFiles")}
        self.assertEqual(copied, MODULE_FILES | {"QXFAXDRV.DLL"})
        self.assertEqual(on_disk, copied)
        for fact in ("Version: Class | Printer", "Version: ClassGUID | {4D36E979-E325-11CE-BFC1-08002BE10318}",
                     "Install: DriverIsolation | 2", "Install: DriverFile | QXFAXDRV.DLL",
                     "DestinationDirs: DefaultDestDir | 66000", "Manufacturer: Quillmarsh | Models | NTamd64"):
            self.assertIn(fact, facts)
        version, = [fact for fact in facts if fact.startswith("Version: DriverVer")]
        self.assertRegex(version, rf"^Version: DriverVer \| \d\d/\d\d/20\d\d \| {re.escape(VERSION)}\.0$")

    def test_help_can_have_the_number_of_its_build_in_its_names(self):
        folder = self.folder / "build 42"
        run("cmake", "--preset", "release", "-B", folder, "-DQX_HELP_BUILD=42", cwd=SOURCES)
        targets = run("ninja", "-C", folder, "-t", "targets", "all")
        for name in ("QXZHENF1B42.CHM", "QXZHLF1B42.CHM"):
            self.assertIn(f"/{name}:", targets)
        for place in (targets, (folder / "packaging/qxfax.inf").read_text(), (folder / "build.ninja").read_text()):
            self.assertNotRegex(place, r"QXZH\w*F1\.CHM")
        self.assertEqual((folder / "packaging/qxfax.inf").read_text().count("QXZHLF1B42.CHM"), 2)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])

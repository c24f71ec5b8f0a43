#!/usr/bin/env python3
"""Writes the bill of materials of an archive (SPDX 2.3, JSON): its binaries, and what is linked into them.

usage: make_bom.py PACKAGE VERSION SECONDS OUT FILE...     SECONDS since 1970: the time of the sources
"""
import datetime
import hashlib
import json
import re
import subprocess
import sys
from pathlib import Path

LIBRARIES = {
    # name: (Debian package that it comes from, supplier, license, its place)
    "gcc-runtime": ("g++-mingw-w64-x86-64-win32", "Organization: Free Software Foundation",
                    "GPL-3.0-or-later WITH GCC-exception-3.1", "https://gcc.gnu.org"),
    "mingw-w64-runtime": ("mingw-w64-x86-64-dev", "Organization: the mingw-w64 project", "ZPL-2.1",
                          "https://www.mingw-w64.org"),
    "winpthreads": ("g++-mingw-w64-x86-64-posix", "Organization: the mingw-w64 project", "MIT AND BSD-3-Clause",
                    "https://www.mingw-w64.org"),
    "CLI11": ("libcli11-dev", "Organization: University of Cincinnati", "BSD-3-Clause",
              "https://github.com/CLIUtils/CLI11"),
    "nlohmann-json": ("nlohmann-json3-dev", "Person: Niels Lohmann", "MIT", "https://github.com/nlohmann/json"),
}
RUNTIME = ["gcc-runtime", "mingw-w64-runtime"]
LINKED = {
    "qxfaxui.dll": RUNTIME,
    "QXFAXDRV.DLL": RUNTIME,
    "qxfaxadm.exe": [*RUNTIME, "CLI11", "nlohmann-json"],
    "faxhost.exe": [*RUNTIME, "winpthreads", "CLI11", "nlohmann-json"],
}


def spdx_id(name):
    return "SPDXRef-" + re.sub(r"[^A-Za-z0-9.]", "-", name)


def version_of(debian_package):
    """With Debian's own revision: that is what the compiler linked in."""
    return subprocess.run(["dpkg-query", "-W", "-f", "${Version}", debian_package], check=True, capture_output=True,
                          text=True).stdout


def file_entry(path):
    data = path.read_bytes()
    return {
        "SPDXID": spdx_id(path.name), "fileName": "./" + path.name, "fileTypes": ["BINARY"],
        "checksums": [{"algorithm": "SHA1", "checksumValue": hashlib.sha1(data).hexdigest()},
                      {"algorithm": "SHA256", "checksumValue": hashlib.sha256(data).hexdigest()}],
        "licenseConcluded": "NOASSERTION", "licenseInfoInFiles": ["NOASSERTION"],
        "copyrightText": "Copyright (C) Quillmarsh",
    }


def package_entry(name, version, supplier, license_text, place, **more):
    return {
        "SPDXID": spdx_id(name), "name": name, "versionInfo": version, "supplier": supplier, "downloadLocation": place,
        "filesAnalyzed": False, "licenseConcluded": license_text, "licenseDeclared": license_text,
        "copyrightText": "NOASSERTION", **more,
    }


def main(package, version, seconds, out, *files):
    paths = [Path(file) for file in files]
    entries = [file_entry(path) for path in paths]
    libraries = sorted({library for path in paths for library in LINKED.get(path.name, [])})
    name = f"qxfax-{package}"
    code = hashlib.sha1("".join(sorted(entry["checksums"][0]["checksumValue"] for entry in entries)).encode()).hexdigest()
    product = package_entry(name, version, "Organization: Quillmarsh", "NOASSERTION", "NOASSERTION")
    product |= {"filesAnalyzed": True, "hasFiles": [entry["SPDXID"] for entry in entries],
                "packageVerificationCode": {"packageVerificationCodeValue": code},
                "licenseInfoFromFiles": ["NOASSERTION"]}
    document = {
        "spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT", "name": f"{name}-{version}",
        "documentNamespace": f"https://quillmarsh.example/spdx/{name}-{version}-{code}",
        "creationInfo": {
            "created": datetime.datetime.fromtimestamp(int(seconds), datetime.UTC).strftime("%Y-%m-%dT%H:%M:%SZ"),
            "creators": ["Organization: Quillmarsh", "Tool: make_bom.py"]},
        "packages": [product, *(package_entry(library, version_of(source), supplier, license_text, place)
                                for library in libraries
                                for source, supplier, license_text, place in [LIBRARIES[library]])],
        "files": entries,
        "relationships": [
            {"spdxElementId": "SPDXRef-DOCUMENT", "relationshipType": "DESCRIBES", "relatedSpdxElement": spdx_id(name)},
            *({"spdxElementId": spdx_id(path.name), "relationshipType": "STATIC_LINK",
               "relatedSpdxElement": spdx_id(library)}
              for path in paths for library in LINKED.get(path.name, []))],
    }
    Path(out).write_text(json.dumps(document, indent=2) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main(*sys.argv[1:])

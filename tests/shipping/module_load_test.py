"""Loading the module changes nothing in the process but the list of its modules: module_load_test.py MODULE RESOURCES HOST"""
import os
import re
import subprocess
import sys

module, resources, host = sys.argv[1:]
dump = subprocess.run(["x86_64-w64-mingw32-objdump", "-p", module], check=True, capture_output=True, text=True).stdout
imported = re.findall(r"DLL Name: (\S+)", dump)
sys.exit(subprocess.run([os.environ["QX_WINE"], host, "Z:" + module, "Z:" + resources, *imported]).returncode)

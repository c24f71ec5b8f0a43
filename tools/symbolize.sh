#!/bin/bash
# Says where in the module's sources a crash happened. See --help.
exec python3 "$(dirname "$0")/symbolize.py" "$@"

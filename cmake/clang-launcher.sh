#!/bin/bash
# SPDX-License-Identifier: MIT
# clang-launcher.sh g++ ARGUMENT... compiles by clang++ what a build gives to g++.
shift
# The command that precompiles a header includes the header too, and clang++ would take it from the file of an earlier build.
for argument; do
  [[ $argument != *.gch ]] || rm -f "$argument"
done
exec clang++ -Wno-unknown-warning-option "$@"

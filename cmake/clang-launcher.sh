#!/bin/bash
# SPDX-License-Identifier: MIT
# clang-launcher.sh g++ ARGUMENT... compiles by clang++ what a build gives to g++.
shift
exec clang++ -Wno-unknown-warning-option "$@"

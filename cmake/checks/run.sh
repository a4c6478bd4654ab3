#!/bin/bash
# SPDX-License-Identifier: MIT
#
# All checks except the tests; `./kv check` calls this. Each check is a function that succeeds, or prints why it fails.
set -u -o pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit
readonly logs=build/logs jobs=${KV_JOBS:-$(nproc)}
mkdir -p "$logs"
failures=0

check() {
  local name=$1 start=$SECONDS log=${1//[^a-zA-Z+]/-}
  log=$logs/check-${log//--/-}.log
  shift
  if "$@" >"$log" 2>&1 </dev/null; then
    printf 'ok   %s (%d s)\n' "$name" $((SECONDS - start))
    return
  fi
  ((++failures))
  printf 'FAIL %s (%s)\n' "$name" "$log"
  # The errors, or where a tool knows no such word the end of what it said.
  sed -i 's/\x1b\[[0-9;]*m//g' "$log"
  { grep -E 'error: |Error|FAILED: ' "$log" || tail -n 25 "$log"; } | awk '!seen[$0]++' | head -n 40 | sed 's/^/     /'
}

cpp_files() {
  local folder
  for folder in kvbase tests examples benchmarks fuzzers; do
    [[ ! -d $folder ]] || find "$folder" \( -name '*.cpp' -o -name '*.h' \) -print0
  done
}

library_sources() { find kvbase -name '*.cpp' "$@" -print0; }

# --- Text ---------------------------------------------------------------------------------------------------------------

format() { cpp_files | xargs -0 clang-format --dry-run -Werror; }

licence() {
  ! { cpp_files; find cmake -name '*.cmake' -print0; } | xargs -0 grep -L 'SPDX-License-Identifier: MIT' |
    sed 's/^/error: no licence line in /' | grep .
}

# Words that only some compilers know stand where the build or one header chooses by the compiler.
one_language() {
  ! grep -rnE 'gnu::|__(extension__|int128|attribute|builtin_|typeof|declspec|restrict)|\basm\b' kvbase --include='*.cpp' \
    --include='*.h' --exclude-dir=platform --exclude=export.h | sed 's/^/error: not every compiler knows this: /' | grep .
}

scripts() {
  shellcheck kv .ci/run cmake/*.sh cmake/checks/*.sh && python3 -B -m unittest discover benchmarks -p '*_test.py'
}

# --- Compilers ----------------------------------------------------------------------------------------------------------

# Everything compiles without a warning (they are errors in these presets), and each public header compiles alone.
compile() {
  local preset=$1
  cmake --preset "$preset" &&
    cmake --build --preset "$preset" -j "$jobs" -- -k 0 &&
    cmake --build --preset "$preset" -j "$jobs" --target all_verify_interface_header_sets -- -k 0
}

# The builds compile sources in groups, so each source is compiled alone here: it has to include what it uses. A second
# compiler finds what only one accepts as C++.
linux_clang() {
  library_sources -path '*/platform/linux/*' | xargs -0 -n 1 -P "$jobs" \
    clang++ -std=c++17 -fsyntax-only -I. -DKVBASE_BUILD -Wall -Wextra -Wpedantic -Wshadow -Werror
}

# The backend of the application framework, which needs MSVC to be built, is checked against declarations of what it uses.
windows_clang() {
  local gcc headers
  gcc=$(dirname "$(x86_64-w64-mingw32-g++-posix -print-libgcc-file-name)")
  headers=(-nostdinc++ -isystem "$gcc/include/c++" -isystem "$gcc/include/c++/x86_64-w64-mingw32"
    -isystem "$gcc/include/c++/backward" -isystem /usr/x86_64-w64-mingw32/include
    -isystem cmake/checks/mfc)
  library_sources -not -path '*/platform/linux/*' | xargs -0 -n 1 -P "$jobs" \
    clang++ --target=x86_64-w64-windows-gnu -std=c++17 -fsyntax-only "${headers[@]}" -I. -DKVBASE_BUILD \
    -mavx2 -mavx512bw -mavx512vl -mavx512vbmi -mavx512vbmi2 -mbmi -mbmi2 -mpopcnt \
    -D_CRT_SECURE_NO_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wgnu -Wmicrosoft -Werror
}

tidy() { run-clang-tidy -quiet -j "$jobs" -p build/linux-asan "^$PWD/(build/linux-asan/CMakeFiles/kvbase_objects.dir|kvbase)/"; }

# --- Products -----------------------------------------------------------------------------------------------------------

# Names under the private version of the seam are left out: they may change at any time.
exports_linux() {
  nm -DC --defined-only --with-symbol-versions build/linux-release/bin/KVBase.so |
    sed -n 's/^[0-9a-f]* [A-Z] \(.*\)@@KVBASE_10\.0$/\1/p' | grep -v '^KVBASE_' | LC_ALL=C sort -u
}

exports_windows() {
  x86_64-w64-mingw32-objdump -p build/windows-release/bin/KVBase.dll |
    sed -n '/Ordinal\/Name Pointer/,$s/^\t\[ *[0-9]*\] //p' | c++filt | grep -v 'KV_1_1::platform::' | LC_ALL=C sort -u
}

exports() {
  local system=$1 list=cmake/exports/$1.txt
  "exports_$system" >"build/exports-$system.txt"
  [[ -s build/exports-$system.txt ]] || { echo "error: no exported name found"; return 1; }
  [[ -z $update_exports ]] || cp "build/exports-$system.txt" "$list"
  diff -u "$list" "build/exports-$system.txt" && return
  echo "exported names changed; ./kv check --update-exports writes the new list"
  return 1
}

# Whether an object runs code at load or enters a destructor in the at-exit list of the process.
runs_at_load() {
  local tools=$1 object=$2
  "${tools}objdump" -h "$object" | grep -qE ' \.((pre)?init_array|fini_array|ctors|dtors)' ||
    "${tools}nm" "$object" | grep -qE ' U (__cxa_|__cxa_thread_)?atexit$'
}

# Only library_globals may run code before the entry function: anywhere else the order would be the linker's. Nor may anything
# else enter the at-exit list, as a static with a destructor in a function does.
initialisers() {
  local build=$1 tools=$2 compiler=$3 object code count=0 faults=0
  for code in 'struct S { S(); }; S s;' 'struct S { ~S(); }; void f() { static S s; }' 'thread_local struct S { ~S(); int i; } s;
    int f() { return s.i; }'; do
    "$compiler" -std=c++17 -x c++ -c -o "$build/runs_at_load.o" - <<<"$code" || return
    runs_at_load "$tools" "$build/runs_at_load.o" || { echo "error: this check does not find: $code"; ((++faults)); }
  done
  while IFS= read -r -d '' object; do
    ((++count))
    [[ $object != */library/library_globals.cpp.* ]] || continue
    ! runs_at_load "$tools" "$object" || { echo "error: $object runs code at load or registers a destructor"; ((++faults)); }
  done < <(find "$build/CMakeFiles/kvbase_objects.dir" \( -name '*.o' -o -name '*.obj' \) -print0)
  echo "$count objects"
  ((count > 0 && faults == 0))
}

# Each system's program starts a module with the translation library that the build of the other one has made. Both must
# read the same.
translation() {
  local place=build/translation linux=build/linux-release windows=build/windows-release
  rm -rf "$place"
  mkdir -p "$place"/linux "$place"/windows
  cp $linux/fixtures/tool.so $windows/fixtures/toolabc.dll "$place/linux"
  cp $windows/fixtures/tool.dll $linux/fixtures/toolabc.dll "$place/windows"
  cmp "$place/linux/toolabc.dll" "$place/windows/toolabc.dll" &&
    $linux/bin/kvbase_module_tests --report "$place/linux.txt" "$place/linux/tool.so" \
      "-version=$place/linux/toolabc.dll" -lang=abc &&
    cmake/wine-runner.sh "$PWD/$windows/wine" $windows/bin/kvbase_module_tests.exe --report "$place/windows.txt" \
      "${place//\//\\}\\windows\\tool.dll" "-version=$place/windows/toolabc.dll" -lang=abc &&
    diff -u tests/fixtures/toolabc.txt "$place/linux.txt" && diff -u tests/fixtures/toolabc.txt "$place/windows.txt"
}

# ------------------------------------------------------------------------------------------------------------------------

update_exports=
case ${1:-} in
  '') ;;
  --update-exports) update_exports=yes ;;
  *) echo "check: unknown option $1" >&2; exit 2 ;;
esac

check "format" format
check "licence lines" licence
check "words of one compiler" one_language
check "scripts" scripts
check "layering" python3 cmake/checks/layering.py
check "operations and their tables" python3 cmake/checks/operations.py
check "warnings and headers, g++" compile linux-release
check "warnings and headers, mingw g++" compile windows-release
check "warnings and headers, clang++" compile linux-asan
check "each source alone, Windows, clang++" windows_clang
check "each Linux source alone, clang++" linux_clang
check "initialisers, Linux" initialisers build/linux-release '' g++
check "initialisers, Windows" initialisers build/windows-release x86_64-w64-mingw32- x86_64-w64-mingw32-g++-posix
check "exported names, Linux" exports linux
check "exported names, Windows" exports windows
check "packages" ./kv package
check "one translation for both systems" translation
check "clang-tidy" tidy

echo "$failures checks failed"
((failures == 0))

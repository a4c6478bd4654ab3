// SPDX-License-Identifier: MIT
#include "tests/shared/modules/run_program.h"

#include "kvbase/platform/types.h"
#include "tests/support/module_files.h"

namespace KV_1_1 {
namespace testing {

int runProgram(std::filesystem::path const& program, std::vector<std::string> const& arguments) {
  std::wstring commandLine = L'"' + program.wstring() + L'"';
  for (std::string const& argument : arguments) {
    commandLine += L" \"" + std::filesystem::u8path(argument).wstring() + L'"';
  }
  std::wstring const folder = programFile().parent_path().wstring();
  STARTUPINFOW startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process = {};
  if (CreateProcessW(program.wstring().c_str(), &commandLine[0], nullptr, nullptr, FALSE, 0, nullptr, folder.c_str(),
                     &startup, &process) == 0) {
    return -1;
  }
  WaitForSingleObject(process.hProcess, INFINITE);
  DWORD status = 0;
  bool const known = GetExitCodeProcess(process.hProcess, &status) != 0;
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return known && status < 256 ? static_cast<int>(status) : -1;
}

}  // namespace testing
}  // namespace KV_1_1

// SPDX-License-Identifier: MIT
#include "tests/shared/modules/run_program.h"

#include "kvbase/platform/types.h"
#include "tests/support/module_files.h"

namespace KV_1_1 {
namespace testing {

int runProgram(std::filesystem::path const& program, std::vector<std::string> const& arguments,
               std::filesystem::path const& output) {
  std::wstring commandLine = L'"' + program.wstring() + L'"';
  for (std::string const& argument : arguments) {
    commandLine += L" \"" + std::filesystem::u8path(argument).wstring() + L'"';
  }
  std::wstring const folder = programFile().parent_path().wstring();
  STARTUPINFOW startup = {};
  startup.cb = sizeof startup;
  if (!output.empty()) {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    HANDLE const file = CreateFileW(output.wstring().c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return -1;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = file;
    startup.hStdError = file;
  }
  PROCESS_INFORMATION process = {};
  bool const started = CreateProcessW(program.wstring().c_str(), &commandLine[0], nullptr, nullptr, !output.empty(), 0,
                                      nullptr, folder.c_str(), &startup, &process) != 0;
  if (!output.empty()) CloseHandle(startup.hStdOutput);
  if (!started) return -1;
  WaitForSingleObject(process.hProcess, INFINITE);
  DWORD status = 0;
  // The handles of a program may be closed a moment after its end; until then its output cannot be removed.
  for (int attempt = 0; !output.empty() && attempt < 500; ++attempt) {
    HANDLE const file =
        CreateFileW(output.wstring().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
      CloseHandle(file);
      break;
    }
    Sleep(10);
  }
  bool const known = GetExitCodeProcess(process.hProcess, &status) != 0;
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return known && status < 256 ? static_cast<int>(status) : -1;
}

}  // namespace testing
}  // namespace KV_1_1

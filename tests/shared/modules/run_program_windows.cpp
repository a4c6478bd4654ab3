// SPDX-License-Identifier: MIT
#include "tests/shared/modules/run_program.h"

#include <fstream>

#include "kvbase/platform/types.h"
#include "tests/support/module_files.h"

namespace KV_1_1 {
namespace testing {

namespace {

// More than any program of the tests writes, so that none waits for the reader.
constexpr DWORD kOutputCapacity = 1 << 20;

// What is in the pipe now. Not up to its end: services that the program has started may keep the other side open.
std::string readAvailable(HANDLE pipe) {
  DWORD available = 0;
  if (PeekNamedPipe(pipe, nullptr, 0, nullptr, &available, nullptr) == 0 || available == 0) return std::string();
  std::string bytes(available, '\0');
  DWORD read = 0;
  if (ReadFile(pipe, &bytes[0], available, &read, nullptr) == 0) return std::string();
  bytes.resize(read);
  return bytes;
}

}  // namespace

int runProgram(std::filesystem::path const& program, std::vector<std::string> const& arguments,
               std::filesystem::path const& output) {
  std::wstring commandLine = L'"' + program.wstring() + L'"';
  for (std::string const& argument : arguments) {
    commandLine += L" \"" + std::filesystem::u8path(argument).wstring() + L'"';
  }
  std::wstring const folder = programFile().parent_path().wstring();
  STARTUPINFOW startup = {};
  startup.cb = sizeof startup;
  HANDLE reading = nullptr;
  HANDLE writing = nullptr;
  if (!output.empty()) {
    if (CreatePipe(&reading, &writing, nullptr, kOutputCapacity) == 0) return -1;
    SetHandleInformation(writing, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = writing;
    startup.hStdError = writing;
  }
  PROCESS_INFORMATION process = {};
  bool const started = CreateProcessW(program.wstring().c_str(), &commandLine[0], nullptr, nullptr, !output.empty(), 0,
                                      nullptr, folder.c_str(), &startup, &process) != 0;
  DWORD status = 0;
  bool known = false;
  if (started) {
    WaitForSingleObject(process.hProcess, INFINITE);
    known = GetExitCodeProcess(process.hProcess, &status) != 0;
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
  }
  if (!output.empty()) {
    std::ofstream(output, std::ios::binary) << readAvailable(reading);
    CloseHandle(writing);
    CloseHandle(reading);
  }
  return known && status < 256 ? static_cast<int>(status) : -1;
}

}  // namespace testing
}  // namespace KV_1_1

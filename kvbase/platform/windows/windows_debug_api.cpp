// SPDX-License-Identifier: MIT
#include "kvbase/platform/internal/native_backends.h"

#include <cstddef>

#include "kvbase/platform/debug_help.h"
#include "kvbase/platform/types.h"

#include <dbghelp.h>
#include <psapi.h>
#include <tlhelp32.h>

namespace KV_1_1 {
namespace platform {

namespace {

static_assert(kAnswerAbort == IDABORT && kAnswerRetry == IDRETRY && kAnswerIgnore == IDIGNORE, "as on Windows");
static_assert(kAbortRetryIgnore == (MB_ABORTRETRYIGNORE | MB_ICONHAND | MB_TASKMODAL | MB_SETFOREGROUND),
              "as on Windows");
static_assert(debug_help::kMachineX64 == IMAGE_FILE_MACHINE_AMD64 && debug_help::kSnapshotModules == TH32CS_SNAPMODULE,
              "as on Windows");
static_assert(offsetof(debug_help::StackFrame64, kernelHelp) == offsetof(STACKFRAME64, KdHelp) &&
                  sizeof(debug_help::StackFrame64) == sizeof(STACKFRAME64),
              "as on Windows");
static_assert(offsetof(debug_help::Symbol64, name) == offsetof(IMAGEHLP_SYMBOL64, Name), "as on Windows");
static_assert(sizeof(debug_help::Line64) == sizeof(IMAGEHLP_LINE64), "as on Windows");
static_assert(offsetof(debug_help::ModuleInfo64, loadedImageName) == offsetof(IMAGEHLP_MODULE64, LoadedImageName),
              "as on Windows");
static_assert(offsetof(debug_help::ModuleEntry32, path) == offsetof(MODULEENTRY32, szExePath) &&
                  sizeof(debug_help::ModuleEntry32) == sizeof(MODULEENTRY32),
              "as on Windows");
static_assert(sizeof(debug_help::ModuleInformation) == sizeof(MODULEINFO), "as on Windows");

// A text of at most kDebugTextCapacity - 1 bytes from a function that returns its length, or the capacity that it needs.
template <class Call>
bool readText(std::string& text, Call call) {
  char buffer[kDebugTextCapacity];
  DWORD const length = call(buffer, static_cast<DWORD>(kDebugTextCapacity));
  if (length == 0 || length >= kDebugTextCapacity) return false;
  text.assign(buffer, length);
  return true;
}

template <class Call>
bool readText(wstring& text, Call call) {
  constexpr DWORD kCapacity = 4096;
  wchar buffer[kCapacity];
  DWORD const length = call(buffer, kCapacity);
  if (length == 0 || length >= kCapacity) return false;
  text.assign(buffer, length);
  return true;
}

}  // namespace

void NativeDebug::output(char const* text) {
  OutputDebugStringA(text);
}

void NativeDebug::output(wchar const* text) {
  OutputDebugStringW(text);
}

int NativeDebug::ask(wchar const* message, wchar const* title, ulong32 style) {
  return MessageBoxW(nullptr, message, title, style);
}

void NativeDebug::breakIntoDebugger() {
  DebugBreak();
}

HINSTANCE NativeDebug::loadLibrary(wchar const* path) {
  return LoadLibraryW(path);
}

void (*NativeDebug::function(HINSTANCE library, char const* name))() {
  return reinterpret_cast<void (*)()>(GetProcAddress(library, name));
}

bool NativeDebug::freeLibrary(HINSTANCE library) {
  return FreeLibrary(library) != 0;
}

bool NativeDebug::closeHandle(void* handle) {
  return CloseHandle(handle) != 0;
}

void* NativeDebug::currentProcess() {
  return GetCurrentProcess();
}

ulong32 NativeDebug::currentProcessId() {
  return GetCurrentProcessId();
}

void* NativeDebug::currentThread() {
  return GetCurrentThread();
}

ulong32 NativeDebug::suspendThread(void* thread) {
  return SuspendThread(thread);
}

ulong32 NativeDebug::resumeThread(void* thread) {
  return ResumeThread(thread);
}

bool NativeDebug::threadContext(void* thread, _CONTEXT& context) {
  return GetThreadContext(thread, &context) != 0;
}

void (*NativeDebug::contextCapture())(_CONTEXT* context) {
  return &RtlCaptureContext;
}

bool NativeDebug::readMemory(void* process, std::uint64_t address, void* buffer, std::size_t size,
                             std::size_t& bytesRead) {
  SIZE_T read = 0;
  bool const complete = ReadProcessMemory(process, reinterpret_cast<void const*>(address), buffer, size, &read) != 0;
  bytesRead = read;
  return complete;
}

bool NativeDebug::programPath(wstring& path) {
  return readText(path, [](wchar* buffer, DWORD capacity) { return GetModuleFileNameW(nullptr, buffer, capacity); });
}

bool NativeDebug::programPath(std::string& path) {
  return readText(path, [](char* buffer, DWORD capacity) { return GetModuleFileNameA(nullptr, buffer, capacity); });
}

bool NativeDebug::currentDirectory(std::string& path) {
  return readText(path, [](char* buffer, DWORD capacity) { return GetCurrentDirectoryA(capacity, buffer); });
}

bool NativeDebug::environmentVariable(wchar const* name, wstring& value) {
  return readText(value,
                  [name](wchar* buffer, DWORD capacity) { return GetEnvironmentVariableW(name, buffer, capacity); });
}

bool NativeDebug::environmentVariable(char const* name, std::string& value) {
  return readText(value,
                  [name](char* buffer, DWORD capacity) { return GetEnvironmentVariableA(name, buffer, capacity); });
}

bool NativeDebug::userName(std::string& name) {
  return readText(name, [](char* buffer, DWORD capacity) -> DWORD {
    // The length that comes back counts the terminator.
    return GetUserNameA(buffer, &capacity) != 0 && capacity > 0 ? capacity - 1 : 0;
  });
}

bool NativeDebug::systemVersion(SystemVersion& version) {
  OSVERSIONINFOEXA record = {};
  static_assert(sizeof record == 156, "as required");
  record.dwOSVersionInfoSize = sizeof record;
  if (GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&record)) == 0) return false;
  version.major = record.dwMajorVersion;
  version.minor = record.dwMinorVersion;
  version.build = record.dwBuildNumber;
  version.servicePack = record.szCSDVersion;
  version.suiteMask = record.wSuiteMask;
  version.productType = record.wProductType;
  return true;
}

ulong32 NativeDebug::versionInfoSize(char const* file) {
  DWORD handle = 0;
  return GetFileVersionInfoSizeA(file, &handle);
}

bool NativeDebug::versionInfo(char const* file, ulong32 size, void* block) {
  return GetFileVersionInfoA(file, 0, size, block) != 0;
}

}  // namespace platform
}  // namespace KV_1_1

// SPDX-License-Identifier: MIT
#include "kvbase/platform/internal/native_backends.h"

#include <errno.h>
#include <pwd.h>
#include <sys/utsname.h>
#include <syslog.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

#include "kvbase/platform/debug_help.h"
#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/linux/debug/context_capture.h"
#include "kvbase/platform/linux/debug/debug_help_functions.h"
#include "kvbase/platform/linux/debug/own_memory.h"
#include "kvbase/platform/linux/debug/question.h"
#include "kvbase/platform/linux/debug/thread_control.h"
#include "kvbase/platform/linux/errors/last_error.h"
#include "kvbase/platform/linux/files/path_mapping.h"
#include "kvbase/platform/linux/modules/elf_modules.h"
#include "kvbase/platform/narrow_text.h"

namespace KV_1_1 {
namespace platform {

namespace {

std::string utf8Of(wchar const* text) {
  int const length = static_cast<int>(std::char_traits<wchar>::length(text));
  TextApi& conversion = nativeText();
  int const size = encodeNarrow(conversion, kUtf8CodePage, text, length, nullptr, 0);
  std::string bytes(static_cast<std::size_t>(size), '\0');
  if (size > 0) encodeNarrow(conversion, kUtf8CodePage, text, length, &bytes[0], size);
  return bytes;
}

wstring wideOf(char const* bytes) {
  int const size = static_cast<int>(strlen(bytes));
  TextApi& conversion = nativeText();
  int const length = decodeNarrow(conversion, kUtf8CodePage, bytes, size, nullptr, 0);
  wstring text(static_cast<std::size_t>(length), 0);
  if (length > 0) decodeNarrow(conversion, kUtf8CodePage, bytes, size, &text[0], length);
  return text;
}

// The path of a file in the library's notation.
wstring libraryPath(char const* file) {
  return textOfPath(KVW(""), file, strlen(file));
}

}  // namespace

void NativeDebug::output(char const* text) {
  if (text != nullptr) syslog(LOG_USER | LOG_DEBUG, "%s", text);
}

void NativeDebug::output(wchar const* text) {
  if (text != nullptr) output(utf8Of(text).c_str());
}

int NativeDebug::ask(wchar const* message, wchar const* title, ulong32 style) {
  if (style != kAbortRetryIgnore) return 0;
  return askAbortRetryIgnore(utf8Of(message == nullptr ? KVW("") : message).c_str(),
                             utf8Of(title == nullptr ? KVW("") : title).c_str());
}

void NativeDebug::breakIntoDebugger() {
  raise(SIGTRAP);
}

HINSTANCE NativeDebug::loadLibrary(wchar const* path) {
  return loadDebugLibrary(path);
}

void (*NativeDebug::function(HINSTANCE library, char const* name))() {
  return debugFunction(library, name);
}

bool NativeDebug::freeLibrary(HINSTANCE library) {
  return freeDebugLibrary(library);
}

bool NativeDebug::closeHandle(void* handle) {
  return closeModuleSnapshot(handle);
}

void* NativeDebug::currentProcess() {
  return reinterpret_cast<void*>(static_cast<std::intptr_t>(-1));
}

ulong32 NativeDebug::currentProcessId() {
  return static_cast<ulong32>(getpid());
}

void* NativeDebug::currentThread() {
  return GetCurrentThread();
}

ulong32 NativeDebug::suspendThread(void* thread) {
  return suspendOtherThread(thread);
}

ulong32 NativeDebug::resumeThread(void* thread) {
  return resumeOtherThread(thread);
}

bool NativeDebug::threadContext(void* thread, _CONTEXT& context) {
  return registersOfThread(thread, context);
}

void (*NativeDebug::contextCapture())(_CONTEXT* context) {
  return &kvbaseCaptureContext;
}

bool NativeDebug::readMemory(void*, std::uint64_t address, void* buffer, std::size_t size, std::size_t& bytesRead) {
  return readOwnMemory(address, buffer, size, bytesRead) || failWith(kPartialCopy);
}

bool NativeDebug::programPath(wstring& path) {
  NativePath native;
  if (!pathOfModule(programModule(), native)) return failWith(kFileNotFound);
  path = libraryPath(native.data());
  return true;
}

bool NativeDebug::programPath(std::string& path) {
  NativePath native;
  if (!pathOfModule(programModule(), native)) return failWith(kFileNotFound);
  path.assign(native.data(), native.size() - 1);
  return true;
}

bool NativeDebug::currentDirectory(std::string& path) {
  NativePath native;
  if (!nativeCurrentDirectory(native)) return failWith(kPathNotFound);
  path.assign(native.data(), native.size() - 1);
  return true;
}

bool NativeDebug::environmentVariable(wchar const* name, wstring& value) {
  char const* const found = getenv(utf8Of(name).c_str());
  if (found == nullptr || *found == '\0') return false;
  value = wideOf(found);
  return true;
}

bool NativeDebug::environmentVariable(char const* name, std::string& value) {
  char const* const found = getenv(name);
  if (found == nullptr || *found == '\0' || strlen(found) >= kDebugTextCapacity) return false;
  value = found;
  return true;
}

bool NativeDebug::userName(std::string& name) {
  std::vector<char> buffer(1024);
  passwd entry = {};
  passwd* found = nullptr;
  while (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE) {
    buffer.resize(2 * buffer.size());
  }
  // A container may run with an id that no user has.
  name = found != nullptr ? std::string(entry.pw_name) : std::to_string(geteuid());
  return true;
}

// The release of a kernel is "6.1.0-18-amd64": three numbers, and a text that takes the place of the service pack.
bool NativeDebug::systemVersion(SystemVersion& version) {
  utsname names = {};
  if (uname(&names) != 0) return false;
  SystemVersion result;
  char const* at = names.release;
  for (ulong32* const number : {&result.major, &result.minor, &result.build}) {
    char* end = nullptr;
    *number = static_cast<ulong32>(strtoul(at, &end, 10));
    at = *end == '.' ? end + 1 : end;
  }
  result.servicePack = *at == '-' ? at + 1 : at;
  version = result;
  return true;
}

ulong32 NativeDebug::versionInfoSize(char const* file) {
  ulong32 handle = 0;
  return file == nullptr ? 0 : nativeModules().versionInfoSize(libraryPath(file).c_str(), handle);
}

bool NativeDebug::versionInfo(char const* file, ulong32 size, void* block) {
  return file != nullptr && nativeModules().versionInfo(libraryPath(file).c_str(), 0, size, block);
}

}  // namespace platform
}  // namespace KV_1_1

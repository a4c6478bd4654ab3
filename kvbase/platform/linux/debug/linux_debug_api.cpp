// SPDX-License-Identifier: MIT
#include "kvbase/platform/internal/native_backends.h"

#include <sys/uio.h>
#include <syslog.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "kvbase/platform/debug_help.h"

namespace KV_1_1 {
namespace platform {

void NativeDebug::output(char const* text) {
  syslog(LOG_USER | LOG_DEBUG, "%s", text);
}

void NativeDebug::output(wchar const*) {}

int NativeDebug::ask(wchar const*, wchar const*, ulong32) {
  return 0;
}

void NativeDebug::breakIntoDebugger() {
  raise(SIGTRAP);
}

HINSTANCE NativeDebug::loadLibrary(wchar const*) {
  return nullptr;
}

void (*NativeDebug::function(HINSTANCE, char const*))() {
  return nullptr;
}

bool NativeDebug::freeLibrary(HINSTANCE) {
  return false;
}

bool NativeDebug::closeHandle(void*) {
  return false;
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

ulong32 NativeDebug::suspendThread(void*) {
  return 0xFFFFFFFF;
}

ulong32 NativeDebug::resumeThread(void*) {
  return 0xFFFFFFFF;
}

bool NativeDebug::threadContext(void*, _CONTEXT&) {
  return false;
}

void (*NativeDebug::contextCapture())(_CONTEXT* context) {
  return [](_CONTEXT*) {};
}

bool NativeDebug::readMemory(void*, std::uint64_t address, void* buffer, std::size_t size, std::size_t& bytesRead) {
  iovec local = {buffer, size};
  iovec remote = {reinterpret_cast<void*>(address), size};
  ssize_t const count = process_vm_readv(getpid(), &local, 1, &remote, 1, 0);
  bytesRead = count > 0 ? static_cast<std::size_t>(count) : 0;
  return bytesRead == size;
}

bool NativeDebug::programPath(wstring&) {
  return false;
}

bool NativeDebug::programPath(std::string&) {
  return false;
}

bool NativeDebug::currentDirectory(std::string&) {
  return false;
}

bool NativeDebug::environmentVariable(wchar const*, wstring&) {
  return false;
}

bool NativeDebug::environmentVariable(char const* name, std::string& value) {
  char const* const found = getenv(name);
  if (found == nullptr || *found == 0) return false;
  std::string const text = found;
  if (text.size() >= kDebugTextCapacity) return false;
  value = text;
  return true;
}

bool NativeDebug::userName(std::string&) {
  return false;
}

bool NativeDebug::systemVersion(SystemVersion&) {
  return false;
}

ulong32 NativeDebug::versionInfoSize(char const*) {
  return 0;
}

bool NativeDebug::versionInfo(char const*, ulong32, void*) {
  return false;
}

}  // namespace platform
}  // namespace KV_1_1

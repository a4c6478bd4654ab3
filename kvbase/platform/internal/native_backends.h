// SPDX-License-Identifier: MIT
//
// The backends of the system the library is built for. They are declared once and implemented twice: by the sources in
// platform/windows, which forward each call one to one, and by those in platform/linux. They have no state, are
// constant-initialised and trivially destroyed, so they can be called at any time.
#pragma once

#include "kvbase/platform/debug_api.h"
#include "kvbase/platform/error_api.h"
#include "kvbase/platform/file_api.h"
#include "kvbase/platform/framework_api.h"
#include "kvbase/platform/locale_api.h"
#include "kvbase/platform/module_api.h"
#include "kvbase/platform/settings_api.h"
#include "kvbase/platform/shell_api.h"
#include "kvbase/platform/text_api.h"

namespace KV_1_1 {
namespace platform {

class NativeFiles final : public FileApi {
 public:
  constexpr NativeFiles() = default;

  ulong32 getAttributes(wchar const* path) override;
  bool setAttributes(wchar const* path, ulong32 attributes) override;
  bool getInfo(wchar const* path, FileInfo& info) override;
  int getStatus(wchar const* path, struct _stat64i32& status) override;
  int isDirectoryEmpty(wchar const* path) override;

  FileHandle openFile(wchar const* path, ulong32 access, ulong32 share, ulong32 disposition, ulong32 flags) override;
  bool closeFile(FileHandle file) override;
  bool setLastWriteTime(FileHandle file, std::uint64_t time) override;
  std::uint64_t systemTime() override;
  int openDescriptor(wchar const* path, int flags, int share, int permission) override;
  int commitDescriptor(int descriptor) override;
  int closeDescriptor(int descriptor) override;

  bool copyFile(wchar const* source, wchar const* target, CopyProgress progress, void* data, ulong32 flags) override;
  bool moveFile(wchar const* source, wchar const* target) override;
  bool deleteFile(wchar const* path) override;
  bool createDirectory(wchar const* path) override;
  bool removeDirectory(wchar const* path) override;

  SearchHandle findFirst(wchar const* pattern, FindData& data) override;
  bool findNext(SearchHandle search, FindData& data) override;
  bool findClose(SearchHandle search) override;

  bool currentDirectory(wstring& path) override;
  bool currentDirectoryOfDrive(int drive, wstring& path) override;
};

class NativeText final : public TextApi {
 public:
  constexpr NativeText() = default;

  unsigned int ansiCodePage() override;
  int decode(unsigned int codePage, char const* bytes, int size, wchar* units, int capacity) override;
  int encode(unsigned int codePage, wchar const* units, int size, char* bytes, int capacity) override;
  int print(wchar* out, std::size_t capacity, wchar const* format, va_list arguments) override;
  unsigned int classesOf(wchar unit) override;
};

class NativeShell final : public ShellApi {
 public:
  constexpr NativeShell() = default;

  std::intptr_t open(wchar const* verb, wchar const* file, wchar const* directory, int show) override;
  ItemList itemListFromPath(wchar const* path) override;
  std::int32_t showItem(ItemList item) override;
  void freeItemList(ItemList item) override;
  bool commonProgramFiles(wstring& folder) override;
};

class NativeErrors final : public ErrorApi {
 public:
  constexpr NativeErrors() = default;

  ulong32 lastError() override;
  void setLastError(ulong32 code) override;
  bool errorText(ulong32 code, wstring& text) override;
};

class NativeModules final : public ModuleApi {
 public:
  constexpr NativeModules() = default;

  HINSTANCE program() override;
  HINSTANCE moduleOf(void const* address) override;
  bool hasEntryFunction(HINSTANCE module) override;
  bool modulePath(HINSTANCE module, wstring& path) override;
  bool longPath(wchar const* path, wstring& longPath) override;

  bool isReadable(wchar const* path) override;
  HINSTANCE loadAsData(wchar const* path) override;
  bool freeLibrary(HINSTANCE module) override;

  HRSRC findResource(HINSTANCE module, wchar const* name, wchar const* type) override;
  HRSRC findResourceOfLanguage(HINSTANCE module, wchar const* type, wchar const* name, std::uint16_t language) override;
  bool resourceLanguages(HINSTANCE module, wchar const* type, wchar const* name,
                         std::set<unsigned short>& languages) override;
  ResourceBytes resourceBytes(HINSTANCE module, HRSRC resource) override;
  bool stringTableEntry(HINSTANCE module, unsigned int id, wstring& text) override;

  ulong32 versionInfoSize(wchar const* file, ulong32& handle) override;
  bool versionInfo(wchar const* file, ulong32 handle, ulong32 size, void* block) override;
  bool queryVersion(void const* block, wchar const* path, void const*& value, ulong32& length) override;
};

class NativeLocales final : public LocaleApi {
 public:
  constexpr NativeLocales() = default;

  ulong32 threadLocale() override;
  bool setThreadLocale(ulong32 locale) override;
  std::uint16_t userUiLanguage() override;
  std::uint16_t userLanguage() override;
  std::uint16_t systemUiLanguage() override;
  std::uint16_t systemLanguage() override;
  bool languageAbbreviation(ulong32 locale, wstring& abbreviation) override;
  bool enumerateLanguageGroups(LanguageGroupCallback callback, void* context) override;
  bool enumerateLocales(ulong32 group, LocaleCallback callback, void* context) override;
  bool commandLine(std::vector<wstring>& arguments) override;
  void setControlsLanguage(std::uint16_t language) override;
};

class NativeSettings final : public SettingsApi {
 public:
  constexpr NativeSettings() = default;

  SettingsKey currentUser() override;
  SettingsKey openKey(SettingsKey parent, wchar const* name) override;
  bool readValue(SettingsKey key, wchar const* name, ulong32& type, void* data, ulong32& size) override;
  void closeKey(SettingsKey key) override;
};

class NativeFramework final : public FrameworkApi {
 public:
  constexpr NativeFramework() = default;

  HINSTANCE resourceInstance() override;
  void setResourceInstance(HINSTANCE instance) override;
  bool startExtension(HINSTANCE instance) override;
  void endExtension() override;
};

class NativeDebug final : public DebugApi {
 public:
  constexpr NativeDebug() = default;

  void output(char const* text) override;
  void output(wchar const* text) override;
  int ask(wchar const* message, wchar const* title, ulong32 style) override;
  void breakIntoDebugger() override;
  HINSTANCE loadLibrary(wchar const* path) override;
  void (*function(HINSTANCE library, char const* name))() override;
  bool freeLibrary(HINSTANCE library) override;
  bool closeHandle(void* handle) override;
  void* currentProcess() override;
  ulong32 currentProcessId() override;
  void* currentThread() override;
  ulong32 suspendThread(void* thread) override;
  ulong32 resumeThread(void* thread) override;
  bool threadContext(void* thread, _CONTEXT& context) override;
  void (*contextCapture())(_CONTEXT* context) override;
  bool readMemory(void* process, std::uint64_t address, void* buffer, std::size_t size,
                  std::size_t& bytesRead) override;
  bool programPath(wstring& path) override;
  bool programPath(std::string& path) override;
  bool currentDirectory(std::string& path) override;
  bool environmentVariable(wchar const* name, wstring& value) override;
  bool environmentVariable(char const* name, std::string& value) override;
  bool userName(std::string& name) override;
  bool systemVersion(SystemVersion& version) override;
  ulong32 versionInfoSize(char const* file) override;
  bool versionInfo(char const* file, ulong32 size, void* block) override;
};

}  // namespace platform
}  // namespace KV_1_1

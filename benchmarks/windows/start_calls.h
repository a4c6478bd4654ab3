// SPDX-License-Identifier: MIT
//
// The calls of the system that the start of a module with a translation has to make.
#pragma once

#include <io.h>
#include <shellapi.h>
#include <shlobj.h>

#include <array>
#include <cwchar>
#include <string>
#include <vector>

#include "benchmarks/support.h"

namespace KV_1_1 {
namespace bench {

// The calls of each step as a program in C would make them: nothing is kept from one step to the next, because a file may
// change in between, and nothing is done with what they give.
class StartCalls {
 public:
  StartCalls() {
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<wchar const*>(&String::EMPTY), &module_);
    require(module_ != nullptr, "the library is a module");
    path_ = modulePath(module_);
    folder_ = path_.substr(0, path_.rfind(L'\\') + 1);
  }

  bool operator()() {
    modulePath(module_);
    longPath();
    readVersion(path_);
    modulePath(module_);
    longPath();
    productFolder();
    forcedLanguage();
    std::wstring const translation = folder_ + L"languages\\" + kWanted;
    bool const found = _waccess((folder_ + kWanted).c_str(), 4) != 0 && _waccess(translation.c_str(), 4) == 0;
    languageOfName();
    readVersion(translation);
    HMODULE const loaded = LoadLibraryExW(translation.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    modulePath(module_);
    longPath();
    return found && loaded != nullptr && FreeLibrary(loaded) != 0;
  }

 private:
  static constexpr wchar const* kWanted = L"KVBasedeu.dll";

  std::wstring modulePath(HMODULE module) {
    return std::wstring(buffer_.data(), GetModuleFileNameW(module, buffer_.data(), MAX_PATH));
  }
  void longPath() { GetLongPathNameW(path_.c_str(), buffer_.data(), MAX_PATH); }
  void readVersion(std::wstring const& path) {
    DWORD handle = 0;
    block_.resize(GetFileVersionInfoSizeW(path.c_str(), &handle));
    require(
        !block_.empty() && GetFileVersionInfoW(path.c_str(), handle, static_cast<DWORD>(block_.size()), block_.data()),
        "the module has a version");
    query(L"\\");
  }
  void query(wchar const* name) {
    void* value = nullptr;
    UINT size = 0;
    VerQueryValueW(block_.data(), name, &value, &size);
  }
  // Its name is made of three texts of the version data.
  void productFolder() {
    SHGetSpecialFolderPathW(nullptr, buffer_.data(), CSIDL_PROGRAM_FILES_COMMON, FALSE);
    modulePath(module_);
    readVersion(path_.substr(folder_.size()));
    query(L"\\VarFileInfo\\Translation");
    for (int text = 0; text < 3; ++text) query(L"\\StringFileInfo\\040704b0\\ProductName");
  }
  // From the command line or the settings of the program.
  void forcedLanguage() {
    int count = 0;
    LocalFree(CommandLineToArgvW(GetCommandLineW(), &count));
    modulePath(nullptr);
    longPath();
    HKEY keys[5];
    HKEY parent = HKEY_CURRENT_USER;
    wchar const* const levels[] = {L"Software", L"VOLQ", L"kvbase_benchmarks", L"Settings", L"10.0"};
    for (int level = 0; level < 5; parent = keys[level++])
      RegOpenKeyExW(parent, levels[level], 0, KEY_READ, &keys[level]);
    DWORD type = 0;
    DWORD size = sizeof buffer_;
    RegQueryValueExW(parent, L"GUILanguage", nullptr, &type, reinterpret_cast<BYTE*>(buffer_.data()), &size);
    for (int level = 4; level >= 0; --level) RegCloseKey(keys[level]);
  }
  // The language that has the three letters: its group and its locale are searched for.
  void languageOfName() { EnumSystemLanguageGroupsW(&visitGroup, LGRPID_SUPPORTED, 0); }
  static BOOL CALLBACK visitGroup(LGRPID group, LPWSTR, LPWSTR, DWORD, LONG_PTR) {
    bool found = false;
    EnumLanguageGroupLocalesW(&visitLocale, group, 0, reinterpret_cast<LONG_PTR>(&found));
    return found ? FALSE : TRUE;
  }
  static BOOL CALLBACK visitLocale(LGRPID, LCID locale, LPWSTR, LONG_PTR found) {
    wchar name[4] = {};
    GetLocaleInfoW(locale, LOCALE_SABBREVLANGNAME, name, 4);
    if (std::wcscmp(name, L"DEU") != 0) return TRUE;
    *reinterpret_cast<bool*>(found) = true;
    return FALSE;
  }

  HMODULE module_ = nullptr;
  std::wstring path_;
  std::wstring folder_;
  std::vector<char> block_;
  std::array<wchar, MAX_PATH> buffer_;
};

// From its first use on, the language in the settings of this program is German. The user's language could not be changed in
// a process that runs. The keys vanish when the user logs off.
class GermanUser {
 public:
  GermanUser() {
    static bool const isSet = set();
    require(isSet, "the settings can be written");
  }

 private:
  static bool set() {
    HKEY key = nullptr;
    if (RegCreateKeyExW(HKEY_CURRENT_USER, L"Software\\VOLQ\\kvbase_benchmarks\\Settings\\10.0", 0, nullptr,
                        REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr, &key, nullptr) != ERROR_SUCCESS) {
      return false;
    }
    wchar const value[] = L"deu";
    bool const done = RegSetValueExW(key, L"GUILanguage", 0, REG_SZ, reinterpret_cast<BYTE const*>(value),
                                     sizeof value) == ERROR_SUCCESS;
    RegCloseKey(key);
    return done;
  }
};

}  // namespace bench
}  // namespace KV_1_1

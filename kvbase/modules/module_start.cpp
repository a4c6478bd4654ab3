// SPDX-License-Identifier: MIT
#include <istream>
#include <memory>

#include "kvbase/core/class_record.h"
#include "kvbase/languages/translation.h"
#include "kvbase/modules/internal/module_path.h"
#include "kvbase/modules/module.h"
#include "kvbase/modules/symbol_table.h"
#include "kvbase/platform/module_api.h"
#include "kvbase/platform/scoped_handle.h"

namespace KV_1_1 {

namespace {

constexpr unsigned short kNoLanguage = 0xFFFF;

struct TranslationTraits {
  using Value = HINSTANCE;
  static Value none() { return nullptr; }
  static void close(Value translation) { platform::modules().freeLibrary(translation); }
};
using Translation = platform::ScopedHandle<TranslationTraits>;

// The file name without folder and extension; an empty text if the system does not know the module.
wstring nameOf(HINSTANCE instance) {
  wstring path;
  platform::modules().modulePath(instance, path);
  wstring longPath = path;
  return stemOf(makeLongPath(longPath) && !longPath.empty() ? longPath : path);
}

// The symbols of the module; null if it has none or a faulty header.
std::unique_ptr<SymbolTable> readSymbols(Module const& module) {
  auto symbols = std::make_unique<SymbolTable>();
  auto const header = module.loadResource(KVW("resource.h"), KVW("METADATA"), /*localized=*/true);
  bool const parsed = header.get() != nullptr && symbols->parseHeaderFile(*header);
  return parsed ? std::move(symbols) : nullptr;
}

// Calls a hook of each class of a module, parents first.
void callHooks(Module const& module, void (mZClass::*hook)() const) {
  for (mZClass const* record = nullptr; mZClass::iterateAllClasses(record);) {
    if (&record->module() == &module) (record->*hook)();
  }
}

}  // namespace

bool Module::internalInit(HINSTANCE instance) {
  if (initialised_ || instance == nullptr) return false;
  codeModule_ = instance;
  HINSTANCE const translation = LoadTranslationDLL(instance, kNoLanguage);
  resourceModule_ = translation != nullptr ? translation : instance;
  {
    // Without memory for the name the module is not started, so nothing would unload the translation.
    Translation owned(resourceModule_ != instance ? translation : nullptr);
    auto name = std::make_unique<String>(nameOf(instance).c_str());
    delete moduleName_;
    moduleName_ = name.release();
    owned.release();
  }
  initialised_ = true;
  resourceSymbols_ = readSymbols(*this).release();
  callHooks(*this, &mZClass::initClassStatics);
  return true;
}

void Module::internalTerm() {
  if (!initialised_) return;
  if (resourceModule_ != codeModule_) platform::modules().freeLibrary(resourceModule_);
  delete resourceSymbols_;
  resourceSymbols_ = nullptr;
  callHooks(*this, &mZClass::clearClassStatics);
  initialised_ = false;
}

}  // namespace KV_1_1

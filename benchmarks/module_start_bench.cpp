// SPDX-License-Identifier: MIT
//
// The start of a module that has a translation, beside the system calls that it has to make.
#include <memory>

#include "benchmarks/support.h"
#include "kvbase/modules/client_module.h"
#include "start_calls.h"

namespace KV_1_1 {
namespace bench {

namespace {

// A module of its own on the library's instance, so that it finds the library's resources and translation.
class LibraryStart {
 public:
  LibraryStart() : header_(KVW("RESOURCE.H")) {
    instance_ = Module::begin()->findResource(header_, KVW("METADATA"), /*localized=*/false, nullptr);
    owner_->start(instance_);
    require(String::loadFromResource(kProjectName, owner_->module()) == String(KVW("KVBase auf Deutsch")),
            "the library has a translation");
    owner_->end();
  }
  bool operator()() {
    bool const started = owner_->start(instance_);
    owner_->end();
    return started;
  }

 private:
  static constexpr unsigned int kProjectName = 4096;

  String header_;
  HINSTANCE instance_;
  std::shared_ptr<ModuleOwner> owner_ = std::make_shared<ModuleOwner>();
};

// The user's language while a contestant runs; other rows see that of the user who runs them.
template <class Work>
auto inGerman(Work work) {
  return [work]() mutable {
    GermanUser const user;
    return work();
  };
}

}  // namespace

void addModuleStart() {
  GermanUser const user;
  Row("modules: start with a translation").add("KVBase", inGerman(LibraryStart())).add("floor", inGerman(StartCalls()));
}

}  // namespace bench
}  // namespace KV_1_1

// SPDX-License-Identifier: MIT
//
// A program that the objects of KVBase are linked into. It writes in which order their globals come up and go down, as the
// seam, a hook and the at-exit list see it.
#include "kvbase/kvbase.h"
#include "kvbase/modules/client_module.h"
#include "tests/shared/order/early.h"
#include "tests/support/scripted_debug_help.h"

using namespace KV_1_1;

namespace order {

class Probe : public BaseNode {
 public:
  KVBASE_DECLARE_CLASS(Probe, );

 protected:
  ~Probe() override = default;
};

void Probe::initStatics() {
  tell("Probe starts");
}
void Probe::clearStatics() {
  tell("Probe ends");
}

KVBASE_REGISTER_CLASS_WITH_HOOKS(Probe, BaseNode)

}  // namespace order

KVBASE_MODULE(order::Probe)

namespace {

struct ProgramObject {
  ProgramObject() { order::tell("static object of the program comes"); }
  ~ProgramObject() { order::tell("static object of the program goes"); }
} const programObject;

// The library that the global walker has loaded is freed by its destructor.
class LastDebug final : public KV_1_1::testing::ScriptedDebugHelp {
 public:
  bool freeLibrary(HINSTANCE library) override {
    if (isEnding) order::tellWalkerGoes();
    return ScriptedDebugHelp::freeLibrary(library);
  }
  bool isEnding = false;
};

}  // namespace

int main() {
  auto& debug = *new LastDebug;
  platform::current.debug = &debug;
  VgStackWalker::globalStackWalker.ShowCallstack(platform::debug().currentThread(), nullptr, nullptr, nullptr);
  debug.isEnding = true;

  // Builds constants that the library builds lazily.
  Directory::fromString(KVW("c:/a/../b"));
  order::watchDestruction();
  order::tell("main returns");
  return 0;
}

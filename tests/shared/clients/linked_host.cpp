// SPDX-License-Identifier: MIT
//
// A program that is linked with KVBase and with a client module, and is a module itself with a class of its own. It returns
// from main, or ends by exit if its argument says so.
#include <cstdlib>
#include <cstring>

#include "kvbase/modules/client_module.h"
#include "tests/fixtures/clients/events.h"
#include "tests/fixtures/clients/shapes.h"

using namespace KV_1_1;

namespace clients {

class Square : public Shape {
 public:
  String describe() const override { return String(KVW("square, ")) + Shape::describe(); }

  KVBASE_DECLARE_CLASS(Square, );

 protected:
  ~Square() override = default;
};

void Square::initStatics() {
  tellModule("Square starts", getLibraryModule());
}
void Square::clearStatics() {
  tellModule("Square ends", getLibraryModule());
}

KVBASE_REGISTER_CLASS_WITH_HOOKS(Square, Shape)

}  // namespace clients

KVBASE_MODULE(clients::Square)

namespace {

// Built before main, behind the modules; destroyed before they end.
struct Early {
  Early() { clients::tellModule("static object comes", getLibraryModule()); }
  ~Early() { clients::tellModule("static object goes", getLibraryModule()); }
} const early;

}  // namespace

int main(int count, char** arguments) {
  SmartPtr<clients::Shape> const square = new clients::Square;
  clients::tell(clients::narrow(square->describe()));
  useShapes();
  if (count > 1 && std::strcmp(arguments[1], "exit") == 0) std::exit(0);
  clients::tell("main returns");
  return 0;
}

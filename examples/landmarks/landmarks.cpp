// SPDX-License-Identifier: MIT
#include "landmarks.h"

#include <kvbase/modules/client_module.h>

#include "resources/symbols.h"

KVBASE_MODULE(landmarks::Landmark, landmarks::Sphere, landmarks::Checkerboard)

namespace landmarks {

namespace {

String textOf(unsigned int id) {
  return String::loadFromResource(id, getLibraryModule());
}

// What all landmarks share from the start of the module to its end. As a Lazy object it is there whenever a hook needs it.
String& unit() {
  static Lazy<String> text;
  return text.get();
}

}  // namespace

void Landmark::initStatics() {
  unit() = textOf(IDS_UNIT);
}
void Landmark::clearStatics() {
  unit() = String::NIL;
}

KVBASE_REGISTER_CLASS_WITH_HOOKS(Landmark, BaseNode)

String Landmark::size() const {
  String text;
  return text << millimetres_ << KVW(' ') << unit();
}

void Sphere::initStatics() {}
void Sphere::clearStatics() {}

KVBASE_REGISTER_CREATABLE_CLASS(Sphere, Landmark)

String Sphere::description() const {
  return textOf(IDS_SPHERE);
}

void Checkerboard::initStatics() {}
void Checkerboard::clearStatics() {}

KVBASE_REGISTER_CREATABLE_CLASS(Checkerboard, Landmark)

String Checkerboard::description() const {
  return textOf(IDS_CHECKERBOARD);
}

}  // namespace landmarks

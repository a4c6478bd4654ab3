// SPDX-License-Identifier: MIT
#include "kvbase/strings/string_resource.h"

namespace KV_1_1 {

StringResource::StringResource() : id_(0xFFFFFFFF), module_(nullptr) {}

StringResource::StringResource(unsigned int id, Module const& module) : id_(id), module_(&module) {}

StringResource::operator String const&() const {
  if (value_ == String::NIL && module_ != nullptr) value_ = String::loadFromResource(id_, *module_);
  return value_;
}

}  // namespace KV_1_1

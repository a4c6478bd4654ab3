// SPDX-License-Identifier: MIT
#include "kvbase/records/info_string_map.h"

#include "kvbase/modules/client_module.h"

namespace KV_1_1 {

InfoStringMap::InfoStringMap() = default;

InfoStringMap::InfoStringMap(InfoStringMap const& other) : InfoStringMap(other.infos_) {}

InfoStringMap::InfoStringMap(Infos const& infos) : infos_(infos) {}

InfoStringMap& InfoStringMap::operator=(InfoStringMap const& other) {
  setInfos(other.infos_);
  ObserverInfo::operator=(other);
  return *this;
}

InfoStringMap::~InfoStringMap() = default;

template <>
void InfoStringMap::addInfo<String>(String const& key, String const& value) {
  // The arguments may be references into this map: nodes stay where they are when others are added.
  infos_[key] = value;
}

String const& InfoStringMap::getInfoByKey(String const& key) const {
  auto const found = infos_.find(key);
  return found == infos_.end() ? String::NIL : found->second;
}

InfoStringMap::Infos const& InfoStringMap::getInfos() const {
  return infos_;
}

std::size_t InfoStringMap::getNumberInfos() const {
  return infos_.size();
}

void InfoStringMap::setInfos(Infos const& infos) {
  if (&infos == &infos_) return;
  Infos copy(infos);
  infos_.swap(copy);
}

KVBASE_REGISTER_CLASS(InfoStringMap, ObserverInfo)

}  // namespace KV_1_1

// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <map>

#include "kvbase/export.h"
#include "kvbase/records/observer_info.h"
#include "kvbase/strings/kv_string.h"
#include "kvbase/strings/string_less.h"

namespace KV_1_1 {

// A record of named texts.
//
//   SmartPtr<InfoStringMap> const info(new InfoStringMap);
//   info->addInfo<String>(KVW("Colour"), KVW("red"));
//   info->addInfo<String>(KVW("COLOUR"), KVW("blue"));   // still one entry, whose key is Colour
//   show(info->getInfoByKey(KVW("colour")));             // blue
//
// Keys compare by StringLess2, so the case of A to Z does not matter. NIL is a key like any other; it stands first and
// is not the same as EMPTY. Values may be NIL.
// Lifetime: keys and values share their texts with the Strings that they were copied from.
// Thread rule: several threads may read a map while none writes to it.
class KVBASE_API InfoStringMap : public ObserverInfo {
 public:
  using Infos = std::map<String, String, StringLess2>;

  // Empty; expires.
  InfoStringMap();
  // Failure (both): std::bad_alloc.
  // COMPAT: expires, also if `other` does not; assignment takes that over.
  InfoStringMap(InfoStringMap const& other);
  // Expires.
  explicit InfoStringMap(Infos const& infos);
  // Replaces all entries, and takes over whether it expires. An object assigned to itself keeps its entries in place.
  // Failure: std::bad_alloc; the object is then what it was.
  InfoStringMap& operator=(InfoStringMap const& other);
  ~InfoStringMap() override;

  // Gives a key this value, and adds the entry if there is none. An entry keeps its key as it was first spelt. There is
  // a form for String only: addInfo<String>.
  // Failure: std::bad_alloc; the map is then what it was.
  template <class Value>
  void addInfo(String const& key, Value const& value) = delete;

  // The value itself, not a copy; it is valid until its entry is removed or replaced. The object String::NIL if there
  // is no such key, which looks like a stored NIL; getInfos can tell the two apart.
  String const& getInfoByKey(String const& key) const;

  Infos const& getInfos() const;
  std::size_t getNumberInfos() const;

  // Replaces all entries; nothing happens if it is given its own. It expires as before.
  // Failure: std::bad_alloc; the object is then what it was.
  void setInfos(Infos const& infos);

  KVBASE_DECLARE_CLASS(InfoStringMap, KVBASE_API);

 private:
  Infos infos_;
};

template <>
KVBASE_API void InfoStringMap::addInfo<String>(String const& key, String const& value);

}  // namespace KV_1_1

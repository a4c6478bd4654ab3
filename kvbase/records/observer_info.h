// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/core/base_node.h"
#include "kvbase/export.h"

namespace KV_1_1 {

// The base of the small records that are handed to observers. It knows whether the record expires; what that means is
// up to the applications. No code of the library makes such records.
//
// Ownership: as BaseNode. Thread rule: the count is atomic, the rest belongs to one thread at a time.
class KVBASE_API ObserverInfo : public BaseNode {
 public:
  // Expires.
  ObserverInfo();
  // Expires if `other` does; the new object is unowned.
  ObserverInfo(ObserverInfo const& other);
  // Takes over whether it expires; the owners of both objects stay.
  ObserverInfo& operator=(ObserverInfo const& other);
  ~ObserverInfo() override;

  void setExpire(bool expire);
  bool willExpire() const;

  KVBASE_DECLARE_CLASS(ObserverInfo, KVBASE_API);

 private:
  bool expire_ = true;
};

}  // namespace KV_1_1

// SPDX-License-Identifier: MIT
#include "kvbase/records/observer_info.h"

#include "kvbase/modules/client_module.h"

namespace KV_1_1 {

ObserverInfo::ObserverInfo() = default;
ObserverInfo::ObserverInfo(ObserverInfo const& other) = default;
ObserverInfo& ObserverInfo::operator=(ObserverInfo const& other) = default;
ObserverInfo::~ObserverInfo() = default;

void ObserverInfo::setExpire(bool expire) {
  expire_ = expire;
}

bool ObserverInfo::willExpire() const {
  return expire_;
}

KVBASE_REGISTER_CLASS(ObserverInfo, BaseNode)

}  // namespace KV_1_1

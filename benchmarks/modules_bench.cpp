// SPDX-License-Identifier: MIT
//
// Resources of a module, found again and again.
#include <utility>

#include "benchmarks/support.h"
#include "kvbase/platform/module_api.h"

namespace KV_1_1 {
namespace bench {

namespace {

struct Bytes {
  void const* data;
  std::size_t size;
};

u16string plain(Bytes const& bytes) {
  char const* const text = static_cast<char const*>(bytes.data);
  return u16string(text, text + bytes.size);
}

Module const& libraryModule() {
  return *Module::begin();
}

}  // namespace

void addModules() {
  // The header that the library carries, and the same file in Qt's own form, both in memory that is mapped at load.
  Row("modules: find a resource of 65 definitions")
      .add("KVBase",
           [name = String(KVW("RESOURCE.H"))] {
             auto const found = libraryModule().getResource(name, KVW("METADATA"), /*localized=*/false, nullptr);
             return Bytes{found.first, found.second};
           })
      .add(PEER("QResource",
                [name = QString(":/resource.h")] {
                  QResource const found(name);
                  return Bytes{found.data(), static_cast<std::size_t>(found.size())};
                }))
      .add(WINDOWS_PEER("its calls",
                        [module = platform::modules().moduleOf(reinterpret_cast<void const*>(&BaseNode::Class))] {
                          HRSRC const found = FindResourceW(module, L"RESOURCE.H", L"METADATA");
                          return Bytes{LockResource(LoadResource(module, found)), SizeofResource(module, found)};
                        }));
}

}  // namespace bench
}  // namespace KV_1_1

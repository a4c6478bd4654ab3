// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/modules/version_choice.h"

namespace KV_1_1 {
namespace platform {

namespace {

constexpr std::uint16_t kSystemDefault = 0x800;
constexpr std::uint16_t kEnglish = 1033;

std::uint16_t primaryOf(std::uint16_t language) {
  return language & 0x3FF;
}

}  // namespace

PeResources::Version chooseVersion(PeResources& resources, PeResources::Directory const& versions,
                                   std::uint16_t language, LocaleApi& locales) {
  PeResources::Version found = 0;
  auto const is = [&](std::uint16_t wanted) { return (found = resources.findVersion(versions, wanted)) != 0; };
  auto const isOrPrimary = [&](std::uint16_t wanted) { return is(wanted) || is(primaryOf(wanted)); };

  bool const isOpen = primaryOf(language) == 0;
  bool const isOnly = versions.named + versions.numbered == 1;
  if (isOpen && isOnly) return resources.firstVersion(versions);
  if (isOrPrimary(language) || is(0) || !isOpen) return found;
  if (language != kSystemDefault &&
      (is(static_cast<std::uint16_t>(locales.threadLocale())) || isOrPrimary(locales.userLanguage())))
    return found;
  if (isOrPrimary(locales.systemLanguage()) || is(kEnglish)) return found;
  return resources.firstVersion(versions);
}

}  // namespace platform
}  // namespace KV_1_1

// SPDX-License-Identifier: MIT
//
// Places deep in the work of an application, for rows about call stacks.
#pragma once

#include <functional>

namespace KV_1_1 {
namespace bench {

constexpr int kPlacesInApplication = 50;

// Calls `work` at each of the places, one after the other. Above each are more than twenty different functions: of this
// program, from templates and headers as well as of its own, with others inlined into them; of the library, which calls
// the program back; and of the C library. Nearer to the place they are its own, farther from it common to all places.
void callInApplication(std::function<void()> const& work);

}  // namespace bench
}  // namespace KV_1_1

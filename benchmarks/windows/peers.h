// SPDX-License-Identifier: MIT
//
// The libraries that KVBase is compared with on Linux do not exist here, so PEER(...) is none. WINDOWS_PEER(...) is the
// contestant that it holds: a call of the system. KVBase, the standard library and plain C are compared on both systems.
#pragma once

#define NOMINMAX
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#define PEER(...) KV_1_1::bench::Absent()
#define WINDOWS_PEER(...) __VA_ARGS__

// Classes of those libraries that are asked for by name outside of a contestant.
class QFile;
class QObject;
class QTemporaryFile;
class QTimer;

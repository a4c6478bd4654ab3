// SPDX-License-Identifier: MIT
//
// Windows has none of the libraries that KVBase is compared with on Linux: PEER(...) holds one of their contestants there,
// and here it is none. KVBase, the standard library and plain C are compared on both systems.
#pragma once

#define PEER(...) KV_1_1::bench::Absent()

// Classes of those libraries that are asked for by name outside of a contestant.
class QFile;
class QObject;
class QTemporaryFile;
class QTimer;

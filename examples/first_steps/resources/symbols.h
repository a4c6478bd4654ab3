// SPDX-License-Identifier: MIT
#define IDS_SCAN_IN 4100

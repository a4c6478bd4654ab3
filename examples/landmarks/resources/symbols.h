// SPDX-License-Identifier: MIT
#define IDS_UNIT 4100
#define IDS_SPHERE 4101
#define IDS_CHECKERBOARD 4102

// SPDX-License-Identifier: MIT
//
// In the framework this header has what each extension module compiles once; no name of it is used. See afxwin.h.
#pragma once

// SPDX-License-Identifier: MIT
//
// Declarations of the few names of the Microsoft Foundation Classes that KVBase uses, written after their public
// documentation, so that a compiler without them can check the syntax of the code. Nothing is ever linked or run with them.
#pragma once

#include <windows.h>

class CObject {
 public:
  virtual ~CObject();
};

class CException : public CObject {
 public:
  void Delete();
};

class CMemoryException : public CException {};

class CCmdTarget : public CObject {};

class AFX_MODULE_STATE : public CObject {
 public:
  HINSTANCE m_hCurrentInstanceHandle;
  HINSTANCE m_hCurrentResourceHandle;
};

AFX_MODULE_STATE* AfxGetModuleState();

struct AFX_EXTENSION_MODULE {
  BOOL bInitialized;
  HMODULE hModule;
  HMODULE hResource;
};

class CDynLinkLibrary : public CCmdTarget {
 public:
  explicit CDynLinkLibrary(AFX_EXTENSION_MODULE& state, BOOL bSystem = FALSE);
};

BOOL AfxInitExtensionModule(AFX_EXTENSION_MODULE& state, HMODULE hModule);
void AfxTermExtensionModule(AFX_EXTENSION_MODULE& state, BOOL bAll = FALSE);

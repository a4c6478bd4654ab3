// SPDX-License-Identifier: MIT
//
// The backend for applications of the Microsoft Foundation Classes, of which the library is an extension module. It
// takes the place of plain_framework.cpp in builds with KVBASE_WITH_MFC.

// The framework's header must come before that of Windows.
#include <afxwin.h>

#include <afxdllx.h>

#include <new>

#include "kvbase/platform/internal/native_backends.h"

namespace KV_1_1 {
namespace platform {

namespace {

// Zero until the framework fills it, without an initialiser of its own that could run later.
AFX_EXTENSION_MODULE extensionRecord;

// The library's place in the framework's search for resources. The framework takes it out when it is deleted.
CDynLinkLibrary* dynamicLibrary = nullptr;

}  // namespace

HINSTANCE NativeFramework::resourceInstance() {
  return AfxGetModuleState()->m_hCurrentResourceHandle;
}

void NativeFramework::setResourceInstance(HINSTANCE instance) {
  AfxGetModuleState()->m_hCurrentResourceHandle = instance;
}

bool NativeFramework::startExtension(HINSTANCE instance) {
  extensionRecord = AFX_EXTENSION_MODULE();
  if (!AfxInitExtensionModule(extensionRecord, instance)) return false;
  dynamicLibrary = nullptr;
  // The framework reports a failed allocation by an exception of its own, other allocators by that of the language.
  try {
    dynamicLibrary = new CDynLinkLibrary(extensionRecord, /*bSystem=*/FALSE);
  } catch (CMemoryException* failure) {
    failure->Delete();
  } catch (std::bad_alloc const&) {
  }
  return dynamicLibrary != nullptr;
}

void NativeFramework::endExtension() {
  delete dynamicLibrary;
  dynamicLibrary = nullptr;
  AfxTermExtensionModule(extensionRecord, /*bAll=*/FALSE);
}

}  // namespace platform
}  // namespace KV_1_1

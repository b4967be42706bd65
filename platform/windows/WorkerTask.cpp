// SPDX-License-Identifier: ISC
#include "platform/windows/WorkerTask.h"

#include <memory>
#include <objbase.h>

namespace qlx::platform {
namespace {

struct Work {
  std::function<void()> run;
  HMODULE module = nullptr;
};

HMODULE moduleOfThis(DWORD flags) {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | flags,
                     reinterpret_cast<LPCWSTR>(&moduleOfThis), &module);
  return module;
}

DWORD WINAPI runWork(void* parameter) {
  HMODULE module = nullptr;
  {
    const std::unique_ptr<Work> work(static_cast<Work*>(parameter));
    module = work->module;
    const HRESULT entered =
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
    work->run();
    if (SUCCEEDED(entered)) CoUninitialize();
  }
  FreeLibraryAndExitThread(module, 0);
}

} // namespace

HINSTANCE ownModule() { return moduleOfThis(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT); }

bool startWork(std::function<void()> run) {
  auto work = std::make_unique<Work>(Work{std::move(run), moduleOfThis(0)});
  if (work->module == nullptr) return false;
  const HANDLE thread = CreateThread(nullptr, 0, runWork, work.get(), 0, nullptr);
  if (thread == nullptr) {
    FreeLibrary(work->module);
    return false;
  }
  CloseHandle(thread);
  static_cast<void>(work.release());
  return true;
}

} // namespace qlx::platform

// SPDX-License-Identifier: ISC
#include "platform/ModuleResources.h"

#include "platform/windows/WorkerTask.h"

namespace qlx::platform {

namespace {

std::span<const std::byte> find(LPCWSTR type, int number) {
  if (number <= 0 || number > 0xFFFF) return {}; // numbers of resources have 16 bits
  constexpr WORD kAmericanEnglish = MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US);
  const HMODULE module = ownModule();
  const HRSRC found = FindResourceExW(module, type, MAKEINTRESOURCEW(number), kAmericanEnglish);
  if (found == nullptr) return {};
  const void* bytes = LockResource(LoadResource(module, found));
  if (bytes == nullptr) return {};
  return {static_cast<const std::byte*>(bytes), SizeofResource(module, found)};
}

} // namespace

std::span<const std::byte> pngResource(int number) { return find(L"PNG", number); }

std::span<const std::byte> bitmapResource(int number) { return find(RT_BITMAP, number); }

} // namespace qlx::platform

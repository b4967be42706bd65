// SPDX-License-Identifier: ISC
#include "tests/fuzz/FuzzTargets.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

namespace qlx::test {
namespace {

constexpr std::size_t kLongestInput = 0xFFFF;
constexpr std::size_t kMostBytes = 24 * 1024;

std::string keptFile(const char* target) {
  return std::string(QLX_FUZZ_CORPUS) + "/" + target + ".inputs";
}

} // namespace

std::vector<std::vector<std::uint8_t>> keptInputs(const char* target) {
  if (!std::filesystem::exists(keptFile(target))) return {};
  const std::vector<std::uint8_t> bytes = readBytes(keptFile(target));
  std::span<const std::uint8_t> rest(bytes);
  std::vector<std::vector<std::uint8_t>> inputs;
  while (!rest.empty()) {
    const std::size_t length = rest.size() < 2 ? kLongestInput : rest[0] + rest[1] * 256U;
    if (rest.size() < 2 + length) throw std::runtime_error(keptFile(target) + " is cut");
    const auto input = rest.subspan(2, length);
    inputs.emplace_back(input.begin(), input.end());
    rest = rest.subspan(2 + length);
  }
  return inputs;
}

void keepInputs(const char* target, const std::string& folder) {
  std::vector<std::vector<std::uint8_t>> found;
  for (const auto& file : std::filesystem::directory_iterator(folder))
    found.push_back(readBytes(file.path().string()));
  // By length, then by content: the same inputs make the same file.
  std::ranges::sort(found, [](const auto& a, const auto& b) {
    return a.size() != b.size() ? a.size() < b.size() : a < b;
  });
  std::vector<std::uint8_t> kept;
  for (const auto& input : found) {
    if (input.empty() || input.size() > kLongestInput) continue;
    if (kept.size() + 2 + input.size() > kMostBytes) break;
    kept.push_back(static_cast<std::uint8_t>(input.size() & 0xFF));
    kept.push_back(static_cast<std::uint8_t>(input.size() >> 8));
    kept.insert(kept.end(), input.begin(), input.end());
  }
  writeBytes(keptFile(target), kept);
}

} // namespace qlx::test

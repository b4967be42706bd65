// SPDX-License-Identifier: ISC
// What instances leave in the registry, as Windows' own program for it reads it.
#include "platform/SettingsStore.h"
#include "platform/windows/Windows.h"
#include "tests/support/PresetRig.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/ThisSystem.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <string>

namespace qlx::test {
namespace {

using Builder = PresetBytesBuilder;
using Bytes = std::vector<std::uint8_t>;

class RegistryValues : public testing::Test {
 protected:
  RegistryValues() { keepSettingsIn(m_home.path()); }

  static std::shared_ptr<platform::SettingsStore> store() {
    return platform::openUserSettings("Meridane", "QLXBRZ1");
  }

  /// The whole key as `reg export` writes it: UTF-16 behind its mark.
  std::wstring exported() const {
    const auto file = m_home / "key.reg";
    const std::wstring command = L"reg export \"HKCU\\" + keyOfSettings() +
                                 L"\\SOFTWARE\\Meridane\\QLXBRZ1\" \"" + file.native() + L"\" /y";
    EXPECT_EQ(_wsystem(command.c_str()), 0);
    const Bytes bytes = readBytes(file);
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    std::copy_n(bytes.data(), text.size() * sizeof(wchar_t),
                reinterpret_cast<std::uint8_t*>(text.data()));
    return text;
  }

  /// The bytes of a binary value there: hex, in lines that end with a backslash.
  static Bytes binary(const std::wstring& text, const std::wstring& name) {
    const std::wstring head = L"\"" + name + L"\"=hex:";
    Bytes bytes;
    std::size_t at = text.find(head);
    if (at == std::wstring::npos) return bytes;
    at += head.size();
    for (std::wstring digits; at < text.size(); ++at) {
      if (std::iswxdigit(text[at]) != 0) digits += text[at];
      if (digits.size() == 2) {
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(digits, nullptr, 16)));
        digits.clear();
      }
      if (text[at] == L'"' || text[at] == L'[') break;
    }
    return bytes;
  }

 private:
  TemporaryFolder m_home;
};

TEST_F(RegistryValues, AreTheBytesOfPresetFilesAndReachOtherInstances) {
  PresetRig one(store());
  const auto bank = one.effect.getPresetSlots();
  one.editor->storeDefaultBank();
  one.editor->storeDefaultPreset();
  one.editor->storeMemoA();
  one.effect.selectPreset(8);
  one.editor->storeMemoB();

  const presets::PresetSlot eighth = one.slot(8);
  const std::wstring text = exported();
  EXPECT_EQ(binary(text, L"DefaultBank"), Builder().bankImage(bank, 3).bytes());
  EXPECT_EQ(binary(text, L"DefaultPreset"), Builder().presetImage(bank[3]).bytes());
  EXPECT_EQ(binary(text, L"MemoA"), Builder().presetImage(bank[3]).bytes());
  EXPECT_EQ(binary(text, L"MemoB"), Builder().presetImage(eighth).bytes());

  PresetRig other(store());
  other.effect.selectPreset(20);
  other.editor->recallMemoB();
  EXPECT_TRUE(sameBits(other.slot(20), eighth));
  one.editor->clearDefaultBank();
  EXPECT_EQ(exported().find(L"DefaultBank"), std::wstring::npos);
}

TEST_F(RegistryValues, TextsAreThoseThatOtherProgramsWrite) {
  const auto settings = store();
  EXPECT_TRUE(settings->writeText("CurrDir", "C:\\Größe 日本\\"));
  EXPECT_NE(exported().find(L"\"CurrDir\"=\"C:\\\\Größe 日本\\\\\""), std::wstring::npos);
  const std::wstring command = L"reg add \"HKCU\\" + keyOfSettings() +
                               L"\\SOFTWARE\\Meridane\\QLXBRZ1\" /v ManualPath /t REG_SZ /d "
                               L"\"C:\\Handbücher\\手册.html\" /f";
  ASSERT_EQ(_wsystem(command.c_str()), 0);
  EXPECT_EQ(settings->readText("ManualPath"), "C:\\Handbücher\\手册.html");
}

} // namespace
} // namespace qlx::test

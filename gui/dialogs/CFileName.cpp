// SPDX-License-Identifier: ISC
#include "gui/dialogs/CFileName.h"

#include "gui/dialogs/DialogLook.h"

namespace qlx::gui {

namespace {

constexpr std::size_t kLongestName = 255;

} // namespace

CFileName::CFileName(const CRect& size, std::string_view name,
                     std::function<bool(const CKeyCode&)> dialogKey)
    : CTextEdit(size, nullptr, 0, name, nullptr, kNoFrame), m_dialogKey(std::move(dialogKey)) {
  setFont(kDialogFont);
  setFontColor(kDialogText);
  setBackColor(kDialogSheet);
  setHoriAlign(CHoriTxtAlign::kLeftText);
  setInputLimit(kLongestName);
  setFieldLimit(kLongestName);
}

bool CFileName::onKeyDown(const CKeyCode& key) {
  return m_dialogKey(key) || CTextEdit::onKeyDown(key);
}

} // namespace qlx::gui

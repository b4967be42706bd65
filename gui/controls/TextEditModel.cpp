// SPDX-License-Identifier: ISC
#include "gui/controls/TextEditModel.h"

#include "gui/drawing/Utf8.h"

#include <algorithm>

namespace qlx::gui {

namespace {

// Letters and digits make words; of what lies beyond ASCII everything but spaces does.
bool inWord(char32_t c) {
  if (c >= 0x80) return c != 0xA0 && c != 0x3000 && (c < 0x2000 || c > 0x206F);
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

bool isControl(char32_t c) { return c < 0x20 || (c >= 0x7F && c < 0xA0); }

} // namespace

void TextEditModel::setText(std::string_view utf8) {
  m_text.clear();
  m_caret = m_anchor = 0;
  insert(utf8);
  selectAll();
}

std::string TextEditModel::text() const { return toUtf8(m_text); }

std::string TextEditModel::selectedText() const {
  return toUtf8(
      std::u32string_view(m_text).substr(selectionStart(), selectionEnd() - selectionStart()));
}

void TextEditModel::insert(std::string_view utf8) {
  std::u32string fresh = fromUtf8(utf8);
  std::erase_if(fresh, isControl);
  if (fresh.empty() && !utf8.empty()) return;
  erase(selectionStart(), selectionEnd());
  fresh.resize(std::min(fresh.size(), m_limit - m_text.size()));
  m_text.insert(m_caret, fresh);
  m_caret = m_anchor = m_caret + fresh.size();
}

void TextEditModel::erase(std::size_t from, std::size_t to) {
  m_text.erase(from, to - from);
  m_caret = m_anchor = from;
}

void TextEditModel::eraseBackward(bool word) {
  if (hasSelection())
    erase(selectionStart(), selectionEnd());
  else if (m_caret > 0)
    erase(word ? wordLeft(m_caret) : m_caret - 1, m_caret);
}

void TextEditModel::eraseForward(bool word) {
  if (hasSelection())
    erase(selectionStart(), selectionEnd());
  else if (m_caret < m_text.size())
    erase(m_caret, word ? wordRight(m_caret) : m_caret + 1);
}

void TextEditModel::moveTo(std::size_t position, bool extend) {
  m_caret = std::min(position, m_text.size());
  if (!extend) m_anchor = m_caret;
}

void TextEditModel::moveLeft(bool word, bool extend) {
  if (hasSelection() && !extend && !word) return moveTo(selectionStart(), false);
  if (m_caret == 0) return moveTo(0, extend);
  moveTo(word ? wordLeft(m_caret) : m_caret - 1, extend);
}

void TextEditModel::moveRight(bool word, bool extend) {
  if (hasSelection() && !extend && !word) return moveTo(selectionEnd(), false);
  moveTo(word ? wordRight(m_caret) : m_caret + 1, extend);
}

void TextEditModel::selectAll() {
  m_anchor = 0;
  m_caret = m_text.size();
}

void TextEditModel::selectWordAt(std::size_t position) {
  m_caret = m_anchor = 0;
  if (m_text.empty()) return;
  const std::size_t at = std::min(position, m_text.size() - 1);
  const bool word = inWord(m_text[at]);
  std::size_t from = at;
  std::size_t to = at + 1;
  while (from > 0 && inWord(m_text[from - 1]) == word) --from;
  while (to < m_text.size() && inWord(m_text[to]) == word) ++to;
  m_anchor = from;
  m_caret = to;
}

std::size_t TextEditModel::wordLeft(std::size_t from) const {
  while (from > 0 && !inWord(m_text[from - 1])) --from;
  while (from > 0 && inWord(m_text[from - 1])) --from;
  return from;
}

std::size_t TextEditModel::wordRight(std::size_t from) const {
  while (from < m_text.size() && inWord(m_text[from])) ++from;
  while (from < m_text.size() && !inWord(m_text[from])) ++from;
  return from;
}

} // namespace qlx::gui

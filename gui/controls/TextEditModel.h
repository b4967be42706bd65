// SPDX-License-Identifier: ISC
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace qlx::gui {

/// The text of a one-line edit box with its caret and selection, counted in characters. Knows
/// nothing of pixels.
class TextEditModel {
 public:
  explicit TextEditModel(std::size_t limit) : m_limit(limit) {}

  /// Replaces everything and selects all of it. More than the limit is cut off.
  void setText(std::string_view utf8);
  std::string text() const;
  const std::u32string& characters() const { return m_text; }

  std::size_t caret() const { return m_caret; }
  std::size_t selectionStart() const { return m_caret < m_anchor ? m_caret : m_anchor; }
  std::size_t selectionEnd() const { return m_caret < m_anchor ? m_anchor : m_caret; }
  bool hasSelection() const { return m_caret != m_anchor; }
  std::string selectedText() const;

  /// Puts the text in place of the selection as far as the limit allows. Control characters are
  /// left out.
  void insert(std::string_view utf8);
  /// Removes the selection, or the character or word before or after the caret.
  void eraseBackward(bool word);
  void eraseForward(bool word);

  /// Moves the caret to a place (at most the text's end); `extend` keeps the other end of the
  /// selection.
  void moveTo(std::size_t position, bool extend);
  /// One character or word. Without `extend` a selection collapses to that side.
  void moveLeft(bool word, bool extend);
  void moveRight(bool word, bool extend);
  void selectAll();
  /// Selects the word, or the run of other characters, around a place.
  void selectWordAt(std::size_t position);

 private:
  std::size_t wordLeft(std::size_t from) const;
  std::size_t wordRight(std::size_t from) const;
  void erase(std::size_t from, std::size_t to);

  std::u32string m_text;
  std::size_t m_limit;
  std::size_t m_caret = 0;
  std::size_t m_anchor = 0;
};

} // namespace qlx::gui

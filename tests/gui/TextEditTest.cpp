// SPDX-License-Identifier: ISC
#include "gui/controls/CTextEdit.h"

#include "gui/controls/TextEditModel.h"
#include "tests/gui/FrameFixture.h"

namespace qlx::test {

namespace {

using enum VirtualKey;
using platform::kModifierControl;
using platform::kModifierShift;

struct ModelCase {
  const char* what;
  const char* before; // [ and ] around the selection, caret at |
  void (*act)(TextEditModel&);
  const char* after;
};

TextEditModel modelOf(std::string_view picture) {
  std::string text;
  std::size_t caret = 0;
  std::size_t anchor = std::string::npos;
  for (const char c : picture) {
    if (c == '|')
      caret = text.size();
    else if (c == '[')
      anchor = text.size();
    else
      text += c;
  }
  TextEditModel model(20);
  model.setText(text);
  model.moveTo(anchor == std::string::npos ? caret : anchor, false);
  model.moveTo(caret, true);
  return model;
}

std::string pictureOf(const TextEditModel& model) {
  std::string text = model.text();
  const std::size_t anchor =
      model.caret() == model.selectionStart() ? model.selectionEnd() : model.selectionStart();
  if (!model.hasSelection()) return text.insert(model.caret(), "|");
  if (anchor < model.caret()) return text.insert(model.caret(), "|").insert(anchor, "[");
  return text.insert(anchor, "[").insert(model.caret(), "|");
}

TEST(TextEditModel, EditsAsEveryBoxDoes) {
  using M = TextEditModel;
  const ModelCase cases[]{
      {"insert", "ab|cd", [](M& m) { m.insert("X"); }, "abX|cd"},
      {"insert over selection", "a[bc|d", [](M& m) { m.insert("X"); }, "aX|d"},
      {"control characters don't type", "a[b|c", [](M& m) { m.insert("\t\n"); }, "a[b|c"},
      {"pasted lines join", "|", [](M& m) { m.insert("a\nb"); }, "ab|"},
      {"limit", "|", [](M& m) { m.insert(std::string(30, 'x')); }, "xxxxxxxxxxxxxxxxxxxx|"},
      {"limit counts what goes", "[aaaaaaaaaaaaaaaaaaaa|", [](M& m) { m.insert("bb"); }, "bb|"},
      {"back", "ab|c", [](M& m) { m.eraseBackward(false); }, "a|c"},
      {"back at the start", "|abc", [](M& m) { m.eraseBackward(false); }, "|abc"},
      {"back takes a selection", "a|bc[d", [](M& m) { m.eraseBackward(true); }, "a|d"},
      {"back by word", "one two  |", [](M& m) { m.eraseBackward(true); }, "one |"},
      {"delete", "a|bc", [](M& m) { m.eraseForward(false); }, "a|c"},
      {"delete at the end", "abc|", [](M& m) { m.eraseForward(true); }, "abc|"},
      {"delete by word", "|one two", [](M& m) { m.eraseForward(true); }, "|two"},
      {"left", "ab|c", [](M& m) { m.moveLeft(false, false); }, "a|bc"},
      {"left collapses", "a[bc|d", [](M& m) { m.moveLeft(false, false); }, "a|bcd"},
      {"right collapses", "a|bc[d", [](M& m) { m.moveRight(false, false); }, "abc|d"},
      {"right extends", "a|bc", [](M& m) { m.moveRight(false, true); }, "a[b|c"},
      {"left shrinks", "a[bc|d", [](M& m) { m.moveLeft(false, true); }, "a[b|cd"},
      {"word left", "one two|", [](M& m) { m.moveLeft(true, false); }, "one |two"},
      {"word right", "on|e two", [](M& m) { m.moveRight(true, false); }, "one |two"},
      {"word right extends", "|one two", [](M& m) { m.moveRight(true, true); }, "[one |two"},
      {"right at the end", "abc|", [](M& m) { m.moveRight(false, true); }, "abc|"},
      {"word under", "one t|wo x", [](M& m) { m.selectWordAt(5); }, "one [two| x"},
      {"gap under", "a -- b|", [](M& m) { m.selectWordAt(2); }, "a[ -- |b"},
      {"word at the end", "one two|", [](M& m) { m.selectWordAt(7); }, "one [two|"},
      {"all", "a|b", [](M& m) { m.selectAll(); }, "[ab|"},
  };
  for (const ModelCase& c : cases) {
    TextEditModel model = modelOf(c.before);
    c.act(model);
    EXPECT_EQ(pictureOf(model), c.after) << c.what;
  }
}

TEST(TextEditModel, CountsCharactersNotBytes) {
  TextEditModel model(3);
  model.setText("\xC3\xA4\xE2\x82\xAC\xF0\x9F\x8E\xB9x"); // a-umlaut, euro, keyboard, x
  EXPECT_EQ(model.text(), "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x8E\xB9");
  model.moveTo(3, false);
  model.eraseBackward(false);
  EXPECT_EQ(model.text(), "\xC3\xA4\xE2\x82\xAC");
}

class TextEdits : public FrameFixture {
 public:
  TextEdits() {
    edit = &frame->addView(
        std::make_unique<CTextEdit>(CRect{20, 20, 140, 35}, &recorder, 149, "Full Organ"));
    edit->setFont(CFontDesc{11.0});
    edit->setHoriAlign(CHoriTxtAlign::kLeftText);
  }

  CTextEdit* edit;
};

struct EndCase {
  const char* what;
  void (*end)(TextEdits&);
  const char* text;
  const char* told;
  bool keepsKeyboard;
};

TEST_F(TextEdits, AcceptsOrCancels) {
  const EndCase cases[]{
      {"Enter", [](TextEdits& t) { t.key(kReturn); }, "New", "v0 ", false},
      {"keypad Enter", [](TextEdits& t) { t.key(kEnter); }, "New", "v0 ", false},
      {"Tab", [](TextEdits& t) { t.key(kTab); }, "New", "v0 ", false},
      {"Escape", [](TextEdits& t) { t.key(kEscape); }, "Full Organ", "", false},
      {"press elsewhere", [](TextEdits& t) { t.click(5, 90); }, "New", "v0 ", true},
      {"keyboard lost", [](TextEdits& t) { t.happens(platform::WindowEventType::kFocusLost); },
       "New", "v0 ", true},
      {"window gone",
       [](TextEdits& t) {
         t.window->destroyByOthers();
         t.frame->idle();
       },
       "New", "v0 ", true},
  };
  for (const EndCase& c : cases) {
    SCOPED_TRACE(c.what);
    edit->setText("Full Organ");
    click(60, 27);
    ASSERT_TRUE(edit->isEditingText());
    EXPECT_TRUE(window->hasFocus());
    type("New");
    EXPECT_EQ(edit->getText(), "New") << "typing replaces all and shows at once";
    EXPECT_EQ(recorder.take(), "");
    c.end(*this);
    EXPECT_FALSE(edit->isEditingText());
    EXPECT_EQ(edit->getText(), c.text);
    EXPECT_EQ(recorder.take(), c.told);
    EXPECT_EQ(window->hasFocus(), c.keepsKeyboard);
  }
}

/// A system's text box, typed into by the test.
struct ScriptedTextBox final : platform::TextBox {
  explicit ScriptedTextBox(std::string& typed) : content(typed) {}
  std::string text() const override { return content; }
  void setText(std::string_view utf8) override { content = utf8; }
  std::string& content;
};

class SystemTextBoxes : public TextEdits {
 public:
  SystemTextBoxes() {
    window->setTextBoxes([this](const platform::TextBoxLook& asked) {
      look = asked;
      back.assign(asked.background.pixels,
                  asked.background.pixels + asked.background.width * asked.background.height);
      content = asked.text;
      return std::make_unique<ScriptedTextBox>(content);
    });
    edit->setFontColor({1, 2, 3, 255});
    edit->setBackColor({40, 50, 60, 255});
  }
  void typed(const std::string& text) {
    content = text;
    platform::WindowEvent event;
    event.type = platform::WindowEventType::kTextBoxChanged;
    event.text = text;
    window->inject(event);
  }

  platform::TextBoxLook look;
  std::vector<std::uint32_t> back;
  std::string content;
};

TEST_F(SystemTextBoxes, LieOverTheFieldWithoutItsText) {
  click(60, 27);
  EXPECT_EQ(look.text, edit->getText());
  EXPECT_EQ(look.field.left, 20);
  EXPECT_EQ(look.field.bottom, 35);
  EXPECT_EQ(look.colour, 0x010203U);
  EXPECT_EQ(look.fontHeight, 11);
  EXPECT_EQ(look.limit, 255U);
  ASSERT_EQ(back.size(), 120U * 15U);
  for (int y = 1; y < 14; ++y)
    for (int x = 1; x < 119; ++x)
      ASSERT_EQ(back[static_cast<std::size_t>(y * 120 + x)], 0xFF28323CU) << x << ", " << y;
  frame->idle();
  EXPECT_EQ(shown()[27 * 200 + 30], 0xFF28323CU) << "nothing of the text shows behind it";
  EXPECT_EQ(shown(), redrawnWhole());
}

TEST_F(SystemTextBoxes, TheirTextIsTheFields) {
  click(60, 27);
  EXPECT_TRUE(edit->isEditingText());
  typed("123456789012345678901234567890");
  frame->idle();
  EXPECT_EQ(edit->getText(), "12345678901234567890123456789");
  edit->setText("Other"); // from the store, while something else is being typed
  EXPECT_EQ(content, "123456789012345678901234567890");
  typed("Größe");
  key(kEscape);
  EXPECT_EQ(edit->getText(), "Other");
  EXPECT_EQ(recorder.take(), "");

  click(60, 27);
  edit->setText("Another"); // nothing has been typed yet
  EXPECT_EQ(content, "Another");
  content = "Typed at the last moment"; // which the window has not been told yet
  key(kReturn);
  EXPECT_EQ(edit->getText(), "Typed at the last moment");
  EXPECT_EQ(recorder.take(), "v0 ");
  EXPECT_FALSE(window->hasFocus());

  click(60, 27);
  typed("Left by a click");
  click(5, 90);
  EXPECT_EQ(edit->getText(), "Left by a click");
  EXPECT_EQ(recorder.take(), "v0 ");
  click(60, 27);
  key(kHome); // a host's own idea of a key is not the box's
  EXPECT_EQ(window->takePassedOn(), std::vector{kHome});
}

TEST_F(TextEdits, FieldTakesTwentyNineOfManyCharacters) {
  click(60, 27);
  type("123456789012345678901234567890");
  EXPECT_EQ(edit->getText(), "12345678901234567890123456789");
  key(kBack);
  EXPECT_EQ(edit->getText(), "12345678901234567890123456789") << "the thirtieth went";
  type(std::string(300, 'x'));
  key(kReturn);
  EXPECT_EQ(edit->getText(), "12345678901234567890123456789");
}

TEST_F(TextEdits, PointerIsTheBoxsWhileEditing) {
  click(60, 27);
  press(21, 27);
  drag(139, 27);
  release(139, 27);
  EXPECT_EQ(window->offered(platform::Selection::kPrimary), "Full Organ");
  mouse(platform::WindowEventType::kMouseDown, 60, 27, platform::kPointerLeft, 0, true);
  release(60, 27);
  type("x");
  EXPECT_EQ(edit->getText(), "Full x") << "the double-click chose the word";
  happens(platform::WindowEventType::kMouseLeave);
  EXPECT_TRUE(window->hasFocus()) << "the pointer may wander while a name is typed";
}

TEST_F(TextEdits, CutCopyPaste) {
  click(60, 27);
  type("c", kModifierControl);
  EXPECT_EQ(window->offered(platform::Selection::kClipboard), "Full Organ");
  key(kEnd);
  type("v", kModifierControl);
  frame->idle();
  EXPECT_EQ(edit->getText(), "Full OrganFull Organ");
  key(kHome);
  key(kRight, kModifierControl | kModifierShift);
  type("x", kModifierControl);
  EXPECT_EQ(edit->getText(), "OrganFull Organ");
  EXPECT_EQ(window->offered(platform::Selection::kClipboard), "Full ");
  key(kEnd);
  key(kInsert, kModifierShift);
  frame->idle();
  EXPECT_EQ(edit->getText(), "OrganFull OrganFull ");
  window->offerText(platform::Selection::kPrimary, "P");
  press(21, 27, platform::kPointerMiddle);
  frame->idle();
  EXPECT_EQ(edit->getText(), "POrganFull OrganFull ");
}

TEST_F(TextEdits, CaretBlinksAndPartsEqualTheWhole) {
  click(60, 27);
  key(kEnd);
  const auto lit = shown();
  window->advance(std::chrono::milliseconds(600));
  frame->idle();
  EXPECT_NE(shown(), lit);
  window->advance(std::chrono::milliseconds(600));
  frame->idle();
  EXPECT_EQ(shown(), lit);
  EXPECT_EQ(shown(), redrawnWhole());
}

TEST_F(TextEdits, LongTextScrollsWithTheCaret) {
  click(60, 27);
  type("A name that is far too long for its field on the strip");
  const auto atEnd = shown();
  key(kHome);
  EXPECT_NE(shown(), atEnd);
  key(kEnd);
  EXPECT_EQ(shown(), atEnd);
  for (int i = 0; i < 5; ++i) key(kBack);
  const auto shortened = shown();
  key(kHome);
  key(kEnd);
  EXPECT_EQ(shown(), shortened) << "deleting leaves no gap at the right edge";
}

TEST_F(TextEdits, ClosingTheWindowMidEditTellsNobody) {
  click(60, 27);
  type("x");
  frame.reset();
  EXPECT_EQ(recorder.take(), "");
}

} // namespace
} // namespace qlx::test

// SPDX-License-Identifier: ISC
#include "gui/dialogs/CFileList.h"
#include "gui/dialogs/CFileName.h"
#include "gui/dialogs/CFileSelector.h"
#include "gui/dialogs/CMessageBox.h"
#include "gui/drawing/ShortenedText.h"
#include "tests/gui/FrameFixture.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/desktop/ScriptedFileSelector.h"

#include <filesystem>

namespace qlx::test {
namespace {

using platform::FileRequest;
using Style = FileRequest::Style;
using Paths = platform::FileSelector::Paths;

/// A folder with "sub/inner.qlx", a few presets and what a list of presets leaves out, and a frame
/// as large as an editor.
class FileLists : public FrameFixture {
 protected:
  FileLists() {
    auto headless = std::make_unique<platform::OffscreenWindow>(401, 570);
    window = headless.get();
    frame = std::make_unique<CFrame>(CRect{0, 0, 401, 570}, std::move(headless), testTypeface());
    frame->open();
    std::filesystem::create_directories(folder / "sub");
    for (const char* name : {"take 10.qlx", "Take 2.QLX", "take 02b.qlx", "all.qlb", "notes.txt",
                             ".hidden.qlx", "sub/inner.qlx"})
      writeBytes(folder / name, {});
  }

  FileRequest request(Style style, const std::string& name = {}) const {
    return {style, "Preset", root, name, {{"QLX Preset", "qlx"}}, 0};
  }

  /// Opens the list and presses "R", "E", "D", "U", "B", "T", "H" (Return, Escape, Down, Up,
  /// Back, Tab, Home) or types what is in quotes; answers the path in the folder, "-" when the user
  /// cancelled and "..." while the list is open.
  std::string answerTo(Style style, const std::string& name, const std::string& keys) {
    std::string answer = "...";
    CFileList::show(*frame, request(style, name), [&](const std::string& path) {
      EXPECT_EQ(frame->getModalView(), nullptr);
      answer = path.starts_with(root) ? path.substr(root.size()) : path.empty() ? "-" : path;
    });
    for (std::size_t i = 0; i < keys.size(); ++i) {
      switch (keys[i]) {
      case 'R': key(VirtualKey::kReturn); break;
      case 'E': key(VirtualKey::kEscape); break;
      case 'D': key(VirtualKey::kDown); break;
      case 'U': key(VirtualKey::kUp); break;
      case 'B': key(VirtualKey::kBack); break;
      case 'T': key(VirtualKey::kTab); break;
      case 'H': key(VirtualKey::kHome); break;
      default: {
        const std::size_t end = keys.find('\'', i + 1);
        type(keys.substr(i + 1, end - i - 1));
        i = end;
      }
      }
    }
    frame->removeModalView();
    frame->idle();
    return answer;
  }

  CFileList& list() const { return static_cast<CFileList&>(*frame->getModalView()); }
  void clickRow(int row, bool twice) {
    const CPoint at = list().getRows().getRowRect(row).centre();
    mouse(platform::WindowEventType::kMouseDown, int(at.x), int(at.y), platform::kPointerLeft, 0,
          twice);
    release(int(at.x), int(at.y));
  }

  TemporaryFolder folder;
  std::string root = std::string(folder.path()) + "/";
};

TEST_F(FileLists, ShowFoldersAndFilesOfTheTypeInOrder) {
  FileListModel model(request(Style::Open).types);
  ASSERT_TRUE(model.enter(folder.path()));
  std::string names;
  for (const auto& entry : model.entries()) names += entry.name + (entry.isFolder ? "/ " : ", ");
  EXPECT_EQ(names, "sub/ Take 2.QLX, take 02b.qlx, take 10.qlx, ");
  EXPECT_EQ(model.directory(), root);

  ASSERT_TRUE(model.enter(root + "sub/../sub"));
  EXPECT_EQ(model.directory(), root + "sub/");
  EXPECT_FALSE(model.enter(root + "gone"));
  EXPECT_FALSE(model.enter(root + "all.qlb")) << "a file is no folder";
  EXPECT_EQ(model.directory(), root + "sub/");
  ASSERT_TRUE(model.goUp());
  EXPECT_EQ(model.selectedEntry()->name, "sub") << "where it came from";
  ASSERT_TRUE(model.enter("/"));
  EXPECT_FALSE(model.goUp());
}

TEST_F(FileLists, AreWorkedByKeys) {
  const struct {
    const char* what;
    Style style;
    const char* name;
    const char* keys;
    const char* answer;
  } cases[]{
      {"Escape cancels", Style::Open, "", "E", "-"},
      {"Return without a selection", Style::Open, "", "R", "..."},
      {"second row", Style::Open, "", "DDR", "Take 2.QLX"},
      {"up from nothing is the last", Style::Open, "", "UR", "take 10.qlx"},
      {"into a folder", Style::Open, "", "DRDR", "sub/inner.qlx"},
      {"and back, on that folder", Style::Open, "", "DRBRDR", "sub/inner.qlx"},
      {"first letters, round", Style::Open, "", "'ttt'R", "take 10.qlx"},
      {"letters go round the end", Style::Open, "", "'tttt'R", "Take 2.QLX"},
      {"the proposed name", Style::Save, "mine.qlx", "R", "mine.qlx"},
      {"a typed one replaces it", Style::Save, "mine.qlx", "'my own'R", "my own"},
      {"letters that end the edit elsewhere", Style::Save, "", "'E'R", "E"},
      {"Escape while typing", Style::Save, "mine.qlx", "'x'E", "-"},
      {"no name, nothing saved", Style::Save, "", "R", "..."},
      {"into a folder first", Style::Save, "mine.qlx", "DRTR", "sub/mine.qlx"},
      {"a typed folder is entered", Style::Save, "", "'sub'R'a'R", "sub/a"},
      {"a typed path", Style::Save, "", "'sub/new'R", "sub/new"},
      {"an absolute path", Style::Save, "", "'/no/such'R", "/no/such"},
      {"a path that ends in no name", Style::Save, "", "'/no/such/'R", "..."},
      {"a file's name is taken over", Style::Save, "mine.qlx", "DDTR", "Take 2.QLX"},
  };
  for (const auto& c : cases) EXPECT_EQ(answerTo(c.style, c.name, c.keys), c.answer) << c.what;
}

TEST_F(FileLists, AreWorkedByThePointer) {
  for (int i = 0; i < 40; ++i) writeBytes(folder / ("x" + std::to_string(i) + ".qlx"), {});
  std::string answer = "...";
  ASSERT_TRUE(CFileList::show(*frame, request(Style::Open),
                              [&](const std::string& path) { answer = path; }));
  frame->idle();
  EXPECT_FALSE(CFileList::show(*frame, request(Style::Open), {})) << "one at a time";

  clickRow(0, false);
  EXPECT_EQ(list().getModel().selectedEntry()->name, "sub");
  clickRow(0, true);
  EXPECT_EQ(list().getModel().directory(), root + "sub/");
  list().goUp();
  const CRect rows = list().getRows().getViewSize();
  const CPoint middle = rows.centre();
  platform::WindowEvent wheel;
  wheel.type = platform::WindowEventType::kWheel;
  wheel.x = int(middle.x);
  wheel.y = int(middle.y);
  wheel.distance = -2.0F;
  window->inject(wheel);
  frame->idle();
  EXPECT_EQ(list().getRows().getTop(), 6);
  press(int(rows.right) - 8, int(rows.top) + 60); // the bar, dragged to its end and beyond
  drag(int(rows.right) - 8, 560);
  release(int(rows.right) - 8, 560);
  const int last = list().getModel().count() - 1;
  EXPECT_EQ(list().getRows().getRowAt({middle.x, rows.bottom - 20.0}), last);
  clickRow(last, false);
  EXPECT_EQ(answer, "...");
  clickRow(last, true);
  EXPECT_EQ(answer, root + "x39.qlx");
  EXPECT_EQ(frame->getModalView(), nullptr);
  EXPECT_EQ(shown(), redrawnWhole());
}

// --- The selector: the desktop's dialog, the list, the question before overwriting ---

class FileSelectors : public FileLists {
 protected:
  FileSelectors() {
    auto desktop = std::make_unique<ScriptedFileSelector>();
    dialog = desktop.get();
    selector = std::make_unique<CFileSelector>(std::move(desktop), [this] { return frame.get(); });
  }
  std::string polled() {
    const auto paths = selector->poll();
    if (!paths) return "...";
    return paths->empty() ? "-" : paths->front().substr(root.size());
  }

  ScriptedFileSelector* dialog = nullptr;
  std::unique_ptr<CFileSelector> selector;
};

TEST_F(FileSelectors, CompleteNamesAndAskBeforeOverwriting) {
  enum Where { kDesktop, kList };
  enum Answer { kNotAsked, kReplace, kKeep };
  const struct {
    Where where;
    const char* chosen;
    Answer answer;
    const char* result;
  } cases[]{
      {kDesktop, "new.qlx", kNotAsked, "new.qlx"},
      {kDesktop, "take 10.qlx", kNotAsked, "take 10.qlx"}, // the desktop has asked
      {kDesktop, "take 10", kReplace, "take 10.qlx"},      // about another file
      {kDesktop, "take 10", kKeep, "..."},
      {kDesktop, "new", kNotAsked, "new.qlx"},
      {kDesktop, "NEW.QLX", kNotAsked, "NEW.QLX"},
      {kDesktop, "notes.txt", kNotAsked, "notes.txt.qlx"},
      {kList, "Solo 2.5", kNotAsked, "Solo 2.5.qlx"},
      {kDesktop, ".qlx", kNotAsked, ".qlx.qlx"},
      {kList, "new", kNotAsked, "new.qlx"},
      {kList, "take 10", kReplace, "take 10.qlx"},
      {kList, "take 10.qlx", kReplace, "take 10.qlx"},
      {kList, "take 10.qlx", kKeep, "..."},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.chosen);
    ASSERT_TRUE(selector->open(request(Style::Save, "mine.qlx")));
    if (c.where == kList) {
      dialog->fail();
      EXPECT_EQ(polled(), "...");
      type(c.chosen);
      key(VirtualKey::kReturn);
    } else {
      dialog->answer({root + c.chosen});
    }
    const std::string first = polled();
    if (c.answer == kNotAsked) {
      EXPECT_EQ(first, c.result);
    } else {
      EXPECT_EQ(first, "...");
      auto* question = dynamic_cast<CMessageBox*>(frame->getModalView());
      ASSERT_NE(question, nullptr);
      if (c.answer == kKeep) {
        key(VirtualKey::kReturn); // nothing is lost by Return alone
        ASSERT_TRUE(dialog->request()) << "asked again, with the name as it was completed";
        EXPECT_EQ(dialog->request()->fileName, "take 10.qlx");
      } else {
        question->press(0);
      }
      EXPECT_EQ(polled(), c.result);
    }
    selector->cancel();
    EXPECT_EQ(frame->getModalView(), nullptr);
  }
}

TEST_F(FileSelectors, WithoutAnyWayToAskFail) {
  ASSERT_TRUE(selector->open(request(Style::Open)));
  EXPECT_FALSE(selector->open(request(Style::Open))) << "one dialog at a time";
  CMessageBox::show(*frame, "", "in the way", {"OK"}, {});
  dialog->fail();
  EXPECT_EQ(polled(), "...");
  EXPECT_TRUE(selector->hasFailed());
  frame->removeModalView();

  CFileSelector alone(nullptr, [] { return nullptr; });
  EXPECT_FALSE(alone.open(request(Style::Open)));
}

TEST_F(FileSelectors, DismissedDialogsGiveNoAnswer) {
  ASSERT_TRUE(selector->open(request(Style::Open)));
  selector->cancel();
  EXPECT_FALSE(dialog->request());
  ASSERT_TRUE(selector->open(request(Style::Open)));
  dialog->fail();
  EXPECT_EQ(polled(), "...");
  ASSERT_NE(frame->getModalView(), nullptr);
  selector->cancel();
  EXPECT_EQ(frame->getModalView(), nullptr);
  EXPECT_EQ(polled(), "...");
}

TEST(ShortenedTexts, FitAndSayWhatIsLeft) {
  const auto typeface = testTypeface();
  constexpr CFontDesc font{12.0};
  const std::string text = "ein übermäßig langer Name.qlx";
  const auto whole = static_cast<int>(typeface->width(text, font));
  EXPECT_EQ(shortenedAtEnd(typeface.get(), text, font, whole), text);
  for (int room = 20; room < whole; room += 7) {
    const std::string end = shortenedAtEnd(typeface.get(), text, font, room);
    const std::string start = shortenedAtStart(typeface.get(), text, font, room);
    EXPECT_LE(typeface->width(end, font), room);
    EXPECT_LE(typeface->width(start, font), room);
    EXPECT_TRUE(end.ends_with("…") && text.starts_with(end.substr(0, end.size() - 3)));
    EXPECT_TRUE(start.starts_with("…") && text.ends_with(start.substr(3)));
  }
}

} // namespace
} // namespace qlx::test

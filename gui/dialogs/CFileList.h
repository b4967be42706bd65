// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CViewContainer.h"
#include "gui/dialogs/CFileRows.h"

#include <functional>
#include <string>

namespace qlx::gui {

class CDialogButton;
class CFileName;

/// A dialog inside the window to choose a file by: the folders, the files of the wanted types and,
/// for saving, a field for the name. Shown as the frame's modal view. Enter opens or accepts,
/// Escape cancels, Backspace goes to the folder above, Tab moves between list and name.
class CFileList final : public CViewContainer {
 public:
  /// Called once, after the dialog has gone from the frame. An empty path: the user cancelled.
  using Answer = std::function<void(const std::string& path)>;

  /// Starts in the request's folder; where that can't be read, in the user's own. False, and
  /// nothing is called, while the frame has another modal view.
  static bool show(CFrame& frame, const platform::FileRequest& request, Answer answer);

  bool isTypeOf(std::string_view className) const override {
    return className == "CFileList" || CViewContainer::isTypeOf(className);
  }
  /// A dialog is answered once; there are no copies. Null.
  std::unique_ptr<CView> newCopy() const override { return nullptr; }
  void draw(CDrawContext& context) override;
  CMouseEventResult onMouseDown(const CPoint& where, const CButtonState& buttons) override;
  bool onKeyDown(const CKeyCode& key) override;

  const FileListModel& getModel() const { return m_model; }
  CFileRows& getRows() const { return *m_rows; }

  /// What the buttons do. Accepting a folder enters it.
  void accept();
  void cancel() { answer({}); }
  void goUp();
  void goHome();

 private:
  CFileList(const CRect& size, const platform::FileRequest& request, Answer answer);
  void addViews(const platform::FileRequest& request);
  CDialogButton& addButton(const CRect& place, std::string_view title, void (CFileList::*action)());
  void startIn(const std::string& directory);
  void enter(const std::string& directory);
  void folderChanged();
  bool onNameKey(const CKeyCode& key);
  void takeSelectedName();
  void openSelected();
  void answer(const std::string& path);
  CRect nameBox() const;

  FileListModel m_model;
  std::string m_title;
  Answer m_answer;
  CFileRows* m_rows = nullptr;
  CFileName* m_name = nullptr; ///< null unless it asks for a name
};

} // namespace qlx::gui

// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CControlListener.h"
#include "gui/CView.h"
#include "gui/drawing/CBitmap.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace qlx::gui {

/// A view that shows and sets one value. The value may be set from any thread; everything else
/// belongs to the user-interface thread.
class CControl : public CView {
 public:
  /// Minimum 0, maximum 1, value and default 0. `listener` and `background` may be null.
  CControl(const CRect& size, CControlListener* listener = nullptr, std::int32_t tag = 0,
           CBitmapRef background = nullptr);

  bool isTypeOf(std::string_view className) const override {
    return className == "CControl" || CView::isTypeOf(className);
  }

  /// Any thread. Stored as it is; the listener isn't told; the control is redrawn at the next idle
  /// if it shows another value.
  void setValue(float value) { m_value.store(value, std::memory_order_relaxed); }
  float getValue() const { return m_value.load(std::memory_order_relaxed); }
  /// 0 at the minimum, 1 at the maximum.
  float getValueNormalized() const { return normalized(getValue()); }
  void setValueNormalized(float normalized);
  /// The value that the screen shows.
  float getOldValue() const { return m_shownValue.load(std::memory_order_relaxed); }
  /// Limits the value to minimum..maximum.
  void bounceValue();

  void setMin(float minimum) { m_minimum = minimum; }
  float getMin() const { return m_minimum; }
  void setMax(float maximum) { m_maximum = maximum; }
  float getMax() const { return m_maximum; }
  void setDefaultValue(float value) { m_defaultValue = value; }
  float getDefaultValue() const { return m_defaultValue; }

  void setTag(std::int32_t tag) { m_tag = tag; }
  std::int32_t getTag() const { return m_tag; }
  void setListener(CControlListener* listener) { m_listener = listener; }
  CControlListener* getListener() const { return m_listener; }

  void setBackground(CBitmapRef background);
  const CBitmapRef& getBackground() const { return m_background; }
  /// The pixel of the background that is drawn at the control's corner.
  void setBackOffset(const CPoint& offset);
  const CPoint& getBackOffset() const { return m_backOffset; }

  /// What a person calls the control; empty for one that needs no words, as a text under a knob.
  void setName(std::string_view name) { m_name = name; }
  const std::string& getName() const { return m_name; }
  /// The value in words. Without a maker: as the class says it.
  std::string getValueText() const { return m_valueText ? m_valueText(getValue()) : textOfValue(); }
  void setValueText(std::function<std::string(float value)> maker) {
    m_valueText = std::move(maker);
  }

  /// Tells the listener that the user changed the value.
  virtual void valueChanged();
  /// Brackets a gesture. Nested pairs count as one.
  void beginEdit();
  void endEdit();
  bool isEditing() const { return m_editing > 0; }
  /// Brings the value, limited to minimum..maximum, to `value` in a gesture of its own, if that
  /// changes it.
  void changeTo(float value);

  /// The default-value gesture: when the state is exactly the left button with Control, the value
  /// becomes the default and the listener is told if that changed it. True when it applied.
  bool checkDefaultValue(const CButtonState& buttons);

  /// A control is dirty when it was declared so or shows another value than it has.
  bool isDirty() const override;
  void setDirty(bool dirty = true) override;

  void removed() override;
  /// The toolkit's own: a value that looks like the one on the screen is shown by it.
  void collectDirty(DirtyRegion& region) override;

 protected:
  CControl(const CControl& other);
  void latch(Drawing drawing) override;
  /// The value to draw. While the frame draws, it stays what it was at the beginning, whatever
  /// another thread sets meanwhile, so that getOldValue() is what the screen really shows.
  float drawnValue() const { return isRendering() ? m_drawnValue : getValue(); }
  /// The value in words: its place in the range in per cent.
  virtual std::string textOfValue() const;
  /// Presses and releases the left button there.
  void pressAt(const CPoint& where, std::uint32_t moreButtons = 0);
  /// Whether the control looks the same with either value.
  virtual bool looksAlike(float a, float b) const { return a == b; }
  /// 0 at the minimum, 1 at the maximum.
  float normalized(float value) const;
  /// Draws the background bitmap, if any, shifted by the offset and `extra`.
  void drawBackground(CDrawContext& context, const CPoint& extra = {}) const;

 private:
  std::atomic<float> m_value{0.0F};
  std::atomic<float> m_shownValue{0.0F};
  float m_drawnValue = 0.0F;
  float m_minimum = 0.0F;
  float m_maximum = 1.0F;
  float m_defaultValue = 0.0F;
  std::int32_t m_tag;
  int m_editing = 0;
  std::string m_name;
  std::function<std::string(float)> m_valueText;
  CControlListener* m_listener;
  CBitmapRef m_background;
  CPoint m_backOffset;
};

static_assert(std::atomic<float>::is_always_lock_free);

} // namespace qlx::gui

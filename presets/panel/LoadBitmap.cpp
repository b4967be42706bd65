// SPDX-License-Identifier: ISC
#include "presets/panel/LoadBitmap.h"

#include "resources/images/Images.h"

#include <cstdint>
#include <map>
#include <mutex>
#include <span>

namespace qlx::presets {

namespace {

struct Images {
  std::mutex lock;
  std::map<int, gui::CBitmapRef> byNumber; ///< under the lock
};

/// The images of all windows; none where nobody keeps them.
struct SharedImages {
  std::mutex lock;
  std::weak_ptr<Images> images; ///< under the lock

  std::shared_ptr<Images> get() {
    const std::scoped_lock locked(lock);
    return images.lock();
  }
  std::shared_ptr<Images> getOrMake() {
    const std::scoped_lock locked(lock);
    auto found = images.lock();
    if (found == nullptr) images = found = std::make_shared<Images>();
    return found;
  }
};

SharedImages& sharedImages() {
  static SharedImages shared;
  return shared;
}

gui::CBitmapRef load(int number) {
  return gui::CBitmap::load([number](int scale) -> std::span<const std::uint8_t> {
    const std::span<const std::byte> file = resources::findImage(number, scale);
    return {reinterpret_cast<const std::uint8_t*>(file.data()), file.size()};
  });
}

} // namespace

gui::CBitmapRef loadBitmap(int number) {
  const auto images = sharedImages().get();
  if (images == nullptr) return load(number);
  const std::scoped_lock locked(images->lock);
  gui::CBitmapRef& found = images->byNumber[number];
  if (found == nullptr) found = load(number);
  return found;
}

KeptImages keepImages() { return sharedImages().getOrMake(); }

} // namespace qlx::presets

// SPDX-License-Identifier: ISC
#pragma once

#include <string_view>

namespace qlx::gui {

/// Root of views: answers by class name what an object is.
class CBaseObject {
 public:
  virtual ~CBaseObject() = default;

  /// Whether the object is of the named class or derived from it.
  virtual bool isTypeOf(std::string_view className) const { return className == "CBaseObject"; }

 protected:
  CBaseObject() = default;
  CBaseObject(const CBaseObject&) = default;
  CBaseObject& operator=(const CBaseObject&) = default;
};

} // namespace qlx::gui

// SPDX-License-Identifier: ISC
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qlx::tools {

/// `text` without white space and in lower case (ASCII), for comparing what people type.
std::string folded(std::string_view text);

/// The whole of `text` as a number with a point as decimal sign, whatever the locale.
std::optional<double> asNumber(std::string_view text);

} // namespace qlx::tools

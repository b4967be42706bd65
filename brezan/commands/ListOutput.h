// SPDX-License-Identifier: ISC
#pragma once

#include <iostream>
#include <nlohmann/json.hpp>
#include <string>

namespace qlx::tools {

using Json = nlohmann::ordered_json;

/// JSON texts are UTF-8; a name with other bytes in it is still shown.
inline void print(const Json& json) {
  std::cout << json.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

inline std::string trimmed(std::string text) {
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

} // namespace qlx::tools

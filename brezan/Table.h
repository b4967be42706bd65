// SPDX-License-Identifier: ISC
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace qlx::tools {

/// Text in aligned columns. Columns whose cells are numbers stand to the right.
class Table {
 public:
  explicit Table(std::vector<std::string> heads);
  void add(std::vector<std::string> row); ///< as many cells as heads
  void print(std::ostream& out) const;

 private:
  std::vector<std::vector<std::string>> m_rows; ///< the heads first
};

/// `value` with `decimals` digits after the point.
std::string fixed(double value, int decimals);
/// A linear level as decibels ("-12.3"), "-oo" for silence.
std::string decibels(double linear);

} // namespace qlx::tools

// SPDX-License-Identifier: ISC
#include "brezan/Table.h"

#include "brezan/Words.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace qlx::tools {

namespace {

// Characters, not bytes: a UTF-8 continuation byte adds no width.
std::size_t width(const std::string& cell) {
  return static_cast<std::size_t>(
      std::count_if(cell.begin(), cell.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

} // namespace

Table::Table(std::vector<std::string> heads) { m_rows.push_back(std::move(heads)); }

void Table::add(std::vector<std::string> row) {
  row.resize(m_rows.front().size());
  m_rows.push_back(std::move(row));
}

void Table::print(std::ostream& out) const {
  const std::size_t columns = m_rows.front().size();
  std::vector<std::size_t> widths(columns, 0);
  std::vector<bool> numeric(columns, m_rows.size() > 1);
  for (std::size_t r = 0; r < m_rows.size(); ++r)
    for (std::size_t c = 0; c < columns; ++c) {
      const std::string& cell = m_rows[r][c];
      widths[c] = std::max(widths[c], width(cell));
      if (r > 0 && !cell.empty() && !asNumber(cell)) numeric[c] = false;
    }
  for (const auto& row : m_rows) {
    std::string line;
    for (std::size_t c = 0; c < columns; ++c) {
      const std::string gap(widths[c] - width(row[c]), ' ');
      line += (c > 0 ? "  " : "") + (numeric[c] ? gap + row[c] : row[c] + gap);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
  }
}

std::string fixed(double value, int decimals) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.*f", decimals, value);
  return buffer;
}

std::string decibels(double linear) {
  return linear > 0.0 ? fixed(20.0 * std::log10(linear), 1) : "-oo";
}

} // namespace qlx::tools

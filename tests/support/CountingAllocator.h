// SPDX-License-Identifier: ISC
#pragma once

namespace qlx::test {

/// Counts the allocations of the whole program from its construction on.
class AllocationCount {
 public:
  AllocationCount();
  int value() const;

 private:
  int m_before;
};

} // namespace qlx::test

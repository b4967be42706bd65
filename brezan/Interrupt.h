// SPDX-License-Identifier: ISC
#pragma once

#include <exception>

namespace qlx::tools {

/// Thrown when the user stops the program (Ctrl-C), so that what is half done is taken back.
class Interrupted : public std::exception {
 public:
  const char* what() const noexcept override { return "interrupted"; }
};

/// From now on, signals to stop are noted for `throwIfInterrupted`.
void noteInterrupts();
void throwIfInterrupted();

} // namespace qlx::tools

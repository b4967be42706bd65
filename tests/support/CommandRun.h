// SPDX-License-Identifier: ISC
#pragma once

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <sys/wait.h>

/// The literal of a path as a word of a shell command: folders may have spaces.
#define SHELL_WORD(path) "'" path "'"

namespace qlx::test {

inline std::string contents(const std::filesystem::path& file) {
  std::ostringstream text;
  text << std::ifstream(file, std::ios::binary).rdbuf();
  return text.str();
}

inline void write(const std::filesystem::path& file, const std::string& text) {
  std::ofstream(file, std::ios::binary) << text;
}

struct Finished {
  int status;
  std::string output;
  std::string errors;
};

/// Runs a shell command; its streams are kept apart from the folder where the command may write.
inline Finished run(const std::string& command) {
  const TemporaryFolder streams;
  const std::string redirected = "( " + command + " ) </dev/null >" + (streams / "out").string() +
                                 " 2>" + (streams / "err").string();
  const int status = std::system(redirected.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contents(streams / "out"),
          contents(streams / "err")};
}

} // namespace qlx::test

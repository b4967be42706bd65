// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/System.h"
#include "brezan/validate/Check.h"
#include "brezan/validate/Progress.h"
#include "brezan/validate/Random.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

namespace qlx::validate {

/// What holds for all checks of a run.
struct Settings {
  std::filesystem::path plugin;
  int level = 5; ///< 1 to 10
  std::uint64_t seed = 1;
  double seconds = 1.0; ///< of sound, where a check plays some
  double limit = 60.0;  ///< seconds that one call of the effect may take
};

/// The effect is at fault: the words say how.
class CheckFailed : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The check does not apply to this effect or system.
class CheckSkipped : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// One check while it runs, in its own process.
class CheckRun {
 public:
  CheckRun(const Settings& settings, const Check& check, std::filesystem::path home,
           Progress& progress);

  double seconds() const { return m_settings.seconds; }
  /// How often something is repeated: `low` at level 1, `high` at level 10, growing by the same
  /// factor from level to level.
  int rounds(int low, int high) const;
  Random& random() { return m_random; }
  /// An empty folder, which the environment names as the user's home.
  const std::filesystem::path& home() const { return m_home; }

  /// The effect's library, loaded at the first use.
  const tools::SharedObject& library();
  void unloadLibrary() { m_library.reset(); }

  /// Notes what comes next, for the report of a crash or failure.
  void trying(const std::string& words);
  void entering(CallKind kind, std::int32_t opcode, std::int32_t index);
  /// Throws CheckFailed, with what was being tried.
  [[noreturn]] void fail(const std::string& reason) const;
  void require(bool good, const char* reason) const {
    if (!good) fail(reason);
  }
  [[noreturn]] void skip(const std::string& reason) const { throw CheckSkipped(reason); }

 private:
  const Settings& m_settings;
  std::filesystem::path m_home;
  Progress& m_progress;
  Random m_random;
  std::unique_ptr<tools::SharedObject> m_library;
};

} // namespace qlx::validate

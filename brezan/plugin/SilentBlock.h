// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/plugin/PluginHost.h"

#include <array>
#include <cstddef>
#include <vector>

namespace qlx::tools {

/// A block of stereo silence to be played through a plug-in, and the buffers for what comes back.
class SilentBlock {
 public:
  /// `frames` is at most what the host was started with.
  explicit SilentBlock(int frames) : m_frames(frames) {
    m_buffers.fill(std::vector<float>(static_cast<std::size_t>(frames)));
  }

  void play(PluginHost& host) {
    std::array inputs{m_buffers[0].data(), m_buffers[1].data()};
    std::array outputs{m_buffers[2].data(), m_buffers[3].data()};
    host.process(inputs.data(), outputs.data(), m_frames);
  }

 private:
  int m_frames;
  std::array<std::vector<float>, 4> m_buffers;
};

} // namespace qlx::tools

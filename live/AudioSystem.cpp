// SPDX-License-Identifier: ISC
#include "live/AudioSystem.h"

namespace qlx::live {

bool toChannelMessage(std::span<const std::uint8_t> bytes, int frame,
                      MidiMessage& message) noexcept {
  if (bytes.empty() || bytes[0] < 0x80 || bytes[0] >= 0xF0) return false;
  const int kind = bytes[0] & 0xF0;
  const std::size_t length = kind == 0xC0 || kind == 0xD0 ? 2 : 3;
  if (bytes.size() < length) return false;
  message = {frame, {bytes[0], 0, 0}};
  for (std::size_t i = 1; i < length; ++i) {
    if (bytes[i] > 0x7F) return false;
    message.bytes[i] = bytes[i];
  }
  return true;
}

} // namespace qlx::live

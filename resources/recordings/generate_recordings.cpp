// SPDX-License-Identifier: ISC
// Writes the six motor-noise recordings into a folder: generate_recordings FOLDER

#include "resources/recordings/RecordingFiles.h"
#include "resources/recordings/RecordingPacker.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: generate_recordings FOLDER\n";
    return 2;
  }
  const std::filesystem::path folder = argv[1];
  for (const auto& [name, samples] :
       qlx::recordings::recordingFiles(qlx::recordings::recordMachine())) {
    const std::string bytes = qlx::recordings::packRecording(samples);
    std::ofstream file(folder / name, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
      std::cerr << "generate_recordings: cannot write " << (folder / name) << '\n';
      return 1;
    }
  }
  return 0;
}

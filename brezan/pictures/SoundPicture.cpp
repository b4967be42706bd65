// SPDX-License-Identifier: ISC
#include "brezan/pictures/SoundPicture.h"

#include "brezan/Table.h"
#include "brezan/analysis/Spectrogram.h"
#include "brezan/pictures/DiagramCanvas.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <stdexcept>

namespace qlx::tools {

namespace {

constexpr int kWidth = 1640;
constexpr int kHeight = 980;
constexpr DiagramBox kLeverBox{90, 74, 1430, 30};
constexpr DiagramBox kLevelBox{90, 118, 1430, 200};
constexpr DiagramBox kSpectrumBox{90, 352, 1430, 560};
constexpr double kLowestDb = -72.0; // of the level curve
constexpr double kDarkestDb = -100.0;
constexpr double kBrightestDb = -12.0;
constexpr double kLowestHz = 30.0;
constexpr double kHighestHz = 14000.0;
constexpr double kLevelWindowSeconds = 0.03;

constexpr DiagramColour leverColour(LeverState state) {
  switch (state) {
  case LeverState::Slow: return {0.55, 0.70, 0.80};
  case LeverState::Fast: return {0.93, 0.62, 0.30};
  case LeverState::Stopped: return {0.45, 0.43, 0.45};
  default: return {0.80, 0.74, 0.50};
  }
}

// From nearly black over dark red and orange to cream, in even steps of lightness.
constexpr DiagramColour kHeat[] = {{0.05, 0.04, 0.10}, {0.17, 0.08, 0.28}, {0.40, 0.12, 0.40},
                                   {0.65, 0.20, 0.35}, {0.86, 0.38, 0.22}, {0.96, 0.65, 0.24},
                                   {1.00, 0.95, 0.76}};

DiagramColour heat(double part) {
  const double place = std::clamp(part, 0.0, 1.0) * (std::size(kHeat) - 1);
  const auto i = std::min(static_cast<std::size_t>(place), std::size(kHeat) - 2);
  const double t = place - static_cast<double>(i);
  const auto mix = [t](double a, double b) { return a + t * (b - a); };
  return {mix(kHeat[i].red, kHeat[i + 1].red), mix(kHeat[i].green, kHeat[i + 1].green),
          mix(kHeat[i].blue, kHeat[i + 1].blue)};
}

class Painter : public DiagramCanvas {
 public:
  explicit Painter(const PictureSound& sound) : DiagramCanvas(kWidth, kHeight), m_sound(sound) {
    text(kLeverBox.x, 44, m_sound.title, 22, Align::Left, true);
    lever();
    level();
    spectrum();
    marks();
    timeAxis();
    heatLegend();
  }

 private:
  double timeX(double seconds) const {
    return kLeverBox.x + kLeverBox.width * seconds / m_sound.seconds();
  }
  static double levelY(double db) {
    return kLevelBox.y + kLevelBox.height * std::clamp(db / kLowestDb, 0.0, 1.0);
  }
  static double pitchY(double hz) {
    return kSpectrumBox.bottom() -
           kSpectrumBox.height * std::log(hz / kLowestHz) / std::log(kHighestHz / kLowestHz);
  }

  void lever();
  void level();
  void levelCurve(const std::vector<double>& channel, const DiagramColour& c);
  void spectrum();
  void marks();
  void timeAxis();
  void heatLegend();

  const PictureSound& m_sound;
};

// A band in the colour of what the lever says, from mark to mark.
void Painter::lever() {
  text(kLeverBox.x - 12, kLeverBox.y + 20, "Lever", 14, Align::Right);
  for (std::size_t i = 0; i < m_sound.marks.size(); ++i) {
    const LeverMark& mark = m_sound.marks[i];
    const double from = timeX(mark.seconds);
    const double to =
        i + 1 < m_sound.marks.size() ? timeX(m_sound.marks[i + 1].seconds) : kLeverBox.right();
    colour(leverColour(mark.state));
    fill({from, kLeverBox.y, to - from, kLeverBox.height});
    if (textWidth(mark.words, 14, true) + 12 < to - from)
      text(from + 8, kLeverBox.y + 20, mark.words, 14, Align::Left, true,
           mark.state == LeverState::Stopped ? kPaper : kInk);
  }
  frame(kLeverBox);
}

void Painter::level() {
  colour(kWhite);
  fill(kLevelBox);
  for (int db = 0; db >= static_cast<int>(kLowestDb); db -= 12) {
    colour(kFaint);
    line(kLevelBox.x, levelY(db), kLevelBox.right(), levelY(db));
    text(kLevelBox.x - 12, levelY(db) + 5, std::to_string(db), 13, Align::Right);
  }
  uprightText(34, kLevelBox.y + kLevelBox.height / 2, "Level in dBFS");
  const bool stereo = m_sound.channels.size() > 1;
  levelCurve(m_sound.channels[0], kBlue);
  if (stereo) levelCurve(m_sound.channels[1], kOrange);
  frame(kLevelBox);
  const double y = kLevelBox.y + 18;
  text(kLevelBox.right() + 14, y, stereo ? "left" : "mono", 14, Align::Left, true, kBlue);
  if (stereo) text(kLevelBox.right() + 14, y + 20, "right", 14, Align::Left, true, kOrange);
}

void Painter::levelCurve(const std::vector<double>& channel, const DiagramColour& c) {
  const auto half = static_cast<long long>(kLevelWindowSeconds * m_sound.rate / 2);
  const auto size = static_cast<long long>(channel.size());
  std::vector<double> energy(channel.size() + 1, 0.0);
  for (std::size_t i = 0; i < channel.size(); ++i)
    energy[i + 1] = energy[i] + channel[i] * channel[i];
  std::vector<std::pair<double, double>> points;
  for (int column = 0; column <= static_cast<int>(kLevelBox.width); ++column) {
    const double x = column;
    const auto centre = static_cast<long long>(static_cast<double>(size) * x / kLevelBox.width);
    const long long from = std::clamp(centre - half, 0LL, size);
    const long long to = std::clamp(centre + half, 0LL, size);
    const double power =
        (energy[static_cast<std::size_t>(to)] - energy[static_cast<std::size_t>(from)]) /
        static_cast<double>(std::max(1LL, to - from));
    const double y = levelY(10.0 * std::log10(std::max(power, 1e-12)));
    points.emplace_back(kLevelBox.x + x, y);
  }
  colour(c, 0.85);
  curve(points, 1.4);
}

void Painter::spectrum() {
  std::vector<double> middle(m_sound.channels[0].size(), 0.0);
  for (const auto& channel : m_sound.channels)
    for (std::size_t i = 0; i < middle.size(); ++i)
      middle[i] += channel[i] / static_cast<double>(m_sound.channels.size());
  const SpectrogramRange range{static_cast<int>(kSpectrumBox.width),
                               static_cast<int>(kSpectrumBox.height), kLowestHz, kHighestHz};
  const Spectrogram levels = spectrogram(middle, m_sound.rate, range);
  gui::PixelBuffer image(range.columns, range.rows);
  for (int row = 0; row < range.rows; ++row) {
    std::uint32_t* const pixels = image.row(range.rows - 1 - row);
    for (int column = 0; column < range.columns; ++column) {
      const double db = static_cast<double>(levels.at(column, row));
      pixels[column] = pixelOf(heat((db - kDarkestDb) / (kBrightestDb - kDarkestDb)));
    }
  }
  DiagramCanvas::image(image, static_cast<int>(kSpectrumBox.x), static_cast<int>(kSpectrumBox.y));
  frame(kSpectrumBox);
  constexpr std::pair<double, const char*> kTicks[] = {{50, "50"},    {100, "100"},   {200, "200"},
                                                       {500, "500"},  {1000, "1 k"},  {2000, "2 k"},
                                                       {5000, "5 k"}, {10000, "10 k"}};
  for (const auto& [hz, words] : kTicks) {
    colour(kInk);
    line(kSpectrumBox.x - 6, pitchY(hz), kSpectrumBox.x, pitchY(hz));
    text(kSpectrumBox.x - 12, pitchY(hz) + 5, words, 13, Align::Right);
  }
  uprightText(34, kSpectrumBox.y + kSpectrumBox.height / 2, "Frequency in Hz");
}

void Painter::marks() {
  for (const LeverMark& mark : m_sound.marks) {
    if (mark.seconds <= 0.0) continue;
    const double x = timeX(mark.seconds);
    colour(kInk, 0.8);
    dashedLineDown(x, kLevelBox.y, kLevelBox.bottom());
    colour(kPaper, 0.8);
    dashedLineDown(x, kSpectrumBox.y, kSpectrumBox.bottom());
  }
}

void Painter::timeAxis() {
  // The finest step of round seconds that leaves room between the numbers.
  double step = 0.1;
  for (const double candidate : {0.2, 0.5, 1.0, 2.0, 5.0, 10.0, 30.0, 60.0, 300.0, 600.0})
    if (kSpectrumBox.width * step / m_sound.seconds() < 60.0) step = candidate;
  const int decimals = step < 1.0 ? 1 : 0;
  for (int i = 0; i * step <= m_sound.seconds(); ++i) {
    const double x = timeX(i * step);
    colour(kInk);
    line(x, kSpectrumBox.bottom(), x, kSpectrumBox.bottom() + 6);
    text(x, kSpectrumBox.bottom() + 22, fixed(i * step, decimals), 13, Align::Centre);
  }
  text(kSpectrumBox.x + kSpectrumBox.width / 2, kSpectrumBox.bottom() + 46, "Time in seconds", 14,
       Align::Centre);
}

void Painter::heatLegend() {
  const DiagramBox box{kSpectrumBox.right() + 16, kSpectrumBox.y, 18, kSpectrumBox.height};
  for (int row = 0; row < static_cast<int>(box.height); ++row) {
    const double y = row;
    colour(heat(1.0 - y / box.height));
    fill({box.x, box.y + y, box.width, 1.0});
  }
  frame(box);
  for (int db = -20; db >= static_cast<int>(kDarkestDb); db -= 20) {
    const double y = box.y + box.height * (kBrightestDb - db) / (kBrightestDb - kDarkestDb);
    text(box.right() + 8, y + 5, std::to_string(db), 13);
  }
  text(box.right() + 8, box.y + 14, "dB", 13);
}

} // namespace

void drawPicture(const PictureSound& sound, const std::filesystem::path& path) {
  if (sound.channels.empty() || sound.channels.front().empty())
    throw std::runtime_error("there is no sound to draw");
  Painter(sound).save(path);
}

} // namespace qlx::tools

// SPDX-License-Identifier: ISC
#include "brezan/Table.h"
#include "brezan/bench/Growth.h"
#include "brezan/pictures/DiagramCanvas.h"

#include <algorithm>
#include <cmath>

namespace qlx::tools {

namespace {

constexpr int kWidth = 1640;
constexpr int kHeight = 560;
constexpr DiagramBox kInstancesBox{90, 96, 420, 380};
constexpr DiagramBox kBlocksBox{630, 96, 420, 380};
constexpr DiagramBox kRatesBox{1170, 96, 420, 380};
constexpr double kHeadroom = 1.25; // above the highest point
constexpr double kDotRadius = 3.5;

using Points = std::vector<std::pair<std::string, double>>; // a place's words, and the value

struct Curve {
  std::string name;
  const DiagramColour& colour;
  Points points;
};

/// The least round step of which at most six fit into `most`.
double roundStep(double most) {
  const double decade = std::pow(10.0, std::floor(std::log10(most / 6.0)));
  for (const double factor : {1.0, 2.0, 5.0})
    if (most / (factor * decade) <= 6.0) return factor * decade;
  return 10.0 * decade;
}

/// Places stand evenly, those of the longest curve; shorter curves end at the right like it.
class Diagram {
 public:
  Diagram(DiagramCanvas& canvas, const DiagramBox& box, const std::vector<Curve>& curves)
      : m_canvas(canvas), m_box(box) {
    for (const Curve& curve : curves) {
      if (curve.points.size() > m_places.size()) m_places = curve.points;
      for (const auto& [place, value] : curve.points) m_most = std::max(m_most, value);
    }
    m_most *= kHeadroom;
    canvas.colour(kWhite);
    canvas.fill(box);
    grid();
    places();
    double nameY = box.y + 24;
    for (const Curve& curve : curves) {
      if (curve.points.empty()) continue;
      draw(curve);
      canvas.text(box.x + 14, nameY, curve.name, 14, Align::Left, true, curve.colour);
      nameY += 20;
    }
    canvas.frame(box);
  }

  void words(const std::string& title, const std::string& across, const std::string& up) {
    m_canvas.text(m_box.x, m_box.y - 14, title, 16, Align::Left, true);
    m_canvas.text(m_box.x + m_box.width / 2, m_box.bottom() + 50, across, 14, Align::Centre);
    m_canvas.uprightText(m_box.x - 62, m_box.y + m_box.height / 2, up);
  }

 private:
  double x(std::size_t place) const {
    return m_box.x +
           m_box.width * (static_cast<double>(place) + 0.5) / static_cast<double>(m_places.size());
  }
  double y(double value) const { return m_box.bottom() - m_box.height * value / m_most; }

  void grid() {
    const double step = roundStep(m_most);
    const int decimals = std::max(0, static_cast<int>(-std::floor(std::log10(step))));
    for (int i = 0; i * step <= m_most; ++i) {
      m_canvas.colour(kFaint);
      m_canvas.line(m_box.x, y(i * step), m_box.right(), y(i * step));
      m_canvas.text(m_box.x - 12, y(i * step) + 5, fixed(i * step, decimals), 13, Align::Right);
    }
  }

  void places() {
    for (std::size_t i = 0; i < m_places.size(); ++i) {
      m_canvas.colour(kInk);
      m_canvas.line(x(i), m_box.bottom(), x(i), m_box.bottom() + 6);
      m_canvas.text(x(i), m_box.bottom() + 24, m_places[i].first, 13, Align::Centre);
    }
  }

  void draw(const Curve& curve) {
    std::vector<std::pair<double, double>> points;
    for (std::size_t i = 0; i < curve.points.size(); ++i)
      points.emplace_back(x(m_places.size() - curve.points.size() + i), y(curve.points[i].second));
    m_canvas.colour(curve.colour);
    m_canvas.curve(points, 2.0);
    for (const auto& [atX, atY] : points) m_canvas.dot(atX, atY, kDotRadius);
  }

  DiagramCanvas& m_canvas;
  const DiagramBox& m_box;
  Points m_places; ///< of the longest curve
  double m_most = 0.0;
};

/// The points of `all` that `belongs` to one curve.
Curve curve(const std::vector<GrowthPoint>& all, const char* name, const DiagramColour& colour,
            const std::function<bool(const GrowthPoint&)>& belongs,
            const std::function<std::pair<std::string, double>(const GrowthPoint&)>& show) {
  Curve result{name, colour, {}};
  for (const GrowthPoint& point : all)
    if (belongs(point)) result.points.push_back(show(point));
  return result;
}

bool isBrilliant(const GrowthPoint& point) { return point.what.brilliant; }
bool isLowCpu(const GrowthPoint& point) { return !point.what.brilliant; }
bool isOnOneCore(const GrowthPoint& point) { return point.cores == 1; }
bool isOnTwoCores(const GrowthPoint& point) { return point.cores == 2; }

} // namespace

void drawGrowth(const Growth& growth, const std::filesystem::path& path) {
  DiagramCanvas canvas(kWidth, kHeight);
  canvas.text(kInstancesBox.x, 44, "Processor time, rotors steadily fast", 22, Align::Left, true);
  const auto perInstance = [](const GrowthPoint& point) {
    return std::pair(std::to_string(point.instances), point.nsPerSample);
  };
  const auto perSample = [](const GrowthPoint& point) {
    return std::pair(std::to_string(point.blockFrames), point.nsPerSample);
  };
  const auto load = [](const GrowthPoint& point) {
    return std::pair(
        fixed(point.what.rate / 1000.0, std::fmod(point.what.rate, 1000.0) == 0.0 ? 0 : 1),
        100.0 * point.load);
  };
  Diagram(canvas, kInstancesBox,
          {curve(growth.instances, "one core", kBlue, isOnOneCore, perInstance),
           curve(growth.instances, "two cores", kOrange, isOnTwoCores, perInstance)})
      .words("48 kHz, Brilliant, blocks of 64", "Instances", "CPU ns per sample and instance");
  Diagram(canvas, kBlocksBox,
          {curve(growth.blocks, "Brilliant", kBlue, isBrilliant, perSample),
           curve(growth.blocks, "LowCPU", kOrange, isLowCpu, perSample)})
      .words("48 kHz, one instance", "Frames in a block", "CPU ns per sample");
  Diagram(canvas, kRatesBox,
          {curve(growth.rates, "Brilliant", kBlue, isBrilliant, load),
           curve(growth.rates, "LowCPU", kOrange, isLowCpu, load)})
      .words("Blocks of 64, one instance", "Sample rate in kHz", "Percent of a core");
  canvas.save(path);
}

} // namespace qlx::tools

// SPDX-License-Identifier: ISC
// Draws the third-octave spectra of the motor-noise recordings: draw_recording_spectra FILE.png

#include "resources/recordings/Analysis.h"
#include "resources/recordings/MachineRecordings.h"

#include <algorithm>
#include <array>
#include <cairo.h>
#include <cmath>
#include <iostream>
#include <memory>
#include <string>
#include <utility>

namespace {

using namespace qlx::recordings;

struct SurfaceDeleter {
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
struct ContextDeleter {
  void operator()(cairo_t* context) const { cairo_destroy(context); }
};
using Surface = std::unique_ptr<cairo_surface_t, SurfaceDeleter>;
using Context = std::unique_ptr<cairo_t, ContextDeleter>;

constexpr double kPanelWidth = 460.0;
constexpr double kPanelHeight = 250.0;
constexpr double kLeft = 44.0;
constexpr double kTop = 30.0;
constexpr double kPlotWidth = kPanelWidth - kLeft - 16.0;
constexpr double kPlotHeight = kPanelHeight - kTop - 34.0;
constexpr int kRangeDb = 48; // from the top of the plot to its floor
constexpr int kGridDb = 12;

void text(cairo_t* cr, double x, double y, const std::string& words, double align) {
  cairo_text_extents_t extents;
  cairo_text_extents(cr, words.c_str(), &extents);
  cairo_move_to(cr, x - align * extents.x_advance, y);
  cairo_show_text(cr, words.c_str());
}

std::string hertz(double hz) {
  return hz < 1000.0 ? std::to_string(std::lround(hz))
                     : std::to_string(std::lround(hz * 0.001)) + "k";
}

void drawScales(cairo_t* cr, double topDb, const std::vector<BandLevel>& bands) {
  cairo_set_line_width(cr, 1.0);
  cairo_set_font_size(cr, 10.0);
  for (int down = 0; down <= kRangeDb; down += kGridDb) {
    const double y = kTop + kPlotHeight * down / kRangeDb;
    cairo_set_source_rgb(cr, 0.85, 0.85, 0.85);
    cairo_move_to(cr, kLeft, y);
    cairo_line_to(cr, kLeft + kPlotWidth, y);
    cairo_stroke(cr);
    cairo_set_source_rgb(cr, 0.25, 0.25, 0.25);
    text(cr, kLeft - 5.0, y + 3.5, std::to_string(std::lround(topDb) - down), 1.0);
  }
  const double step = kPlotWidth / static_cast<double>(bands.size());
  for (std::size_t i = 1; i < bands.size(); i += 3) {
    text(cr, kLeft + (static_cast<double>(i) + 0.5) * step, kTop + kPlotHeight + 14.0,
         hertz(bands[i].hz), 0.5);
  }
}

void drawPanel(cairo_t* cr, const std::string& title, const Signal& sound) {
  const std::vector<BandLevel> bands = thirdOctaves(sound);
  const auto loudest = std::max_element(bands.begin(), bands.end(),
                                        [](const auto& a, const auto& b) { return a.db < b.db; });
  const double topDb = 6.0 * std::ceil((loudest->db + 1.0) / 6.0);
  drawScales(cr, topDb, bands);
  const double step = kPlotWidth / static_cast<double>(bands.size());
  cairo_set_source_rgb(cr, 0.48, 0.27, 0.12);
  for (std::size_t i = 0; i < bands.size(); ++i) {
    const double height =
        std::clamp((bands[i].db - topDb) / kRangeDb + 1.0, 0.0, 1.0) * kPlotHeight;
    cairo_rectangle(cr, kLeft + (static_cast<double>(i) + 0.1) * step, kTop + kPlotHeight - height,
                    0.8 * step, height);
  }
  cairo_fill(cr);
  cairo_set_source_rgb(cr, 0.0, 0.0, 0.0);
  cairo_set_font_size(cr, 13.0);
  text(cr, kLeft, kTop - 11.0, title, 0.0);
  cairo_set_font_size(cr, 10.0);
  text(cr, kPanelWidth - 16.0, kTop - 11.0, "dB a third octave / Hz", 1.0);
}

} // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: draw_recording_spectra FILE.png\n";
    return 2;
  }
  const MachineRecordings machine = recordMachine();
  Signal startStop = machine.startStop;
  startStop.resize(static_cast<std::size_t>(kSampleRate)); // silence makes room for fine bands
  const std::array<std::pair<const char*, const Signal*>, 6> panels = {
      {{"Horn slow, microphone 1", &machine.hornSlow[0]},
       {"Horn slow, microphone 2", &machine.hornSlow[1]},
       {"Horn fast", &machine.hornFast},
       {"Drum slow", &machine.drumSlow},
       {"Drum fast", &machine.drumFast},
       {"Start and stop (level over a second)", &startStop}}};
  const Surface surface(cairo_image_surface_create(
      CAIRO_FORMAT_RGB24, static_cast<int>(2 * kPanelWidth), static_cast<int>(3 * kPanelHeight)));
  const Context context(cairo_create(surface.get()));
  cairo_t* cr = context.get();
  cairo_set_source_rgb(cr, 1.0, 1.0, 1.0);
  cairo_paint(cr);
  cairo_select_font_face(cr, "Liberation Sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
  for (std::size_t i = 0; i < panels.size(); ++i) {
    const auto column = static_cast<double>(i % 2);
    const auto row = std::floor(static_cast<double>(i) / 2.0);
    cairo_save(cr);
    cairo_translate(cr, column * kPanelWidth, row * kPanelHeight);
    drawPanel(cr, panels[i].first, *panels[i].second);
    cairo_restore(cr);
  }
  if (cairo_surface_write_to_png(surface.get(), argv[1]) != CAIRO_STATUS_SUCCESS) {
    std::cerr << "draw_recording_spectra: cannot write " << argv[1] << '\n';
    return 1;
  }
  return 0;
}

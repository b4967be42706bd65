#include "tools/artwork/Drawings.h"
#include "tools/artwork/Fittings.h"
#include "tools/artwork/Materials.h"
#include "tools/artwork/Palette.h"

namespace qlx::artwork {

void drawAbout(Frame& frame) {
  Canvas& canvas = frame.canvas;
  canvas.shade(canvas.box(), [](Point p, Colour& colour, double& cover) {
    cover = 1.0;
    colour = walnut(p.x, p.y, 9);
  });
}

} // namespace qlx::artwork

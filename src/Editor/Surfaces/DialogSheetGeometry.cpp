#include "Editor/Surfaces/DialogSheetGeometry.h"

namespace kiv {

namespace {

constexpr int beforeButtons = 8;

}  // namespace

DialogSheetGeometry::DialogSheetGeometry(int width, int bodyHeight, const DialogSheetMeasures &measures,
                                         const DialogSheetDistances &distances)
    : title{padding, distances.edge, width - 2 * padding, measures.titleHeight},
      body{padding, title.bottom() + distances.underTitle, title.width, bodyHeight} {
    const int foot = body.bottom() + distances.aboveFoot;
    const bool wraps = measures.noteWidth + beforeButtons + measures.buttonsWidth > body.width;
    note = {padding, foot, measures.noteWidth, wraps ? measures.labelHeight : measures.controlHeight};
    buttonsTop = wraps ? note.bottom() + distances.betweenLines : foot;
    height = buttonsTop + measures.controlHeight + distances.edge;
}

}  // namespace kiv

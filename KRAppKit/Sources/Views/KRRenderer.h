#pragma once

#include "Geometry/KRGeometry.h"

class KRView;
class QPainter;

// Paints a view tree with QPainter: shadows, backgrounds, content, subviews and borders, with subtree
// alpha composited as one layer, clipping where masksToBounds is set, and presentation values so running
// animations show. Views outside the dirty rect are culled. Used by the host widget, tests and benchmarks.
class KRRenderer {
public:
    // Paints view and its subtree; the painter's coordinates are view's superview's (the window's for a
    // content view). dirtyRect is in the same coordinates.
    static void paintView(QPainter& painter, const KRView& view, KRRect dirtyRect);
    // How many views the last paintView call drew (after culling) — for tests and benchmarks.
    static int lastPaintedViewCount();
};

#pragma once

#include "text/drawn_page.h"

namespace tandrel {

// Parts of a screen. Each is drawn below `y`, the top of free space, and returns where it ends.
using DrawPart = double (*)(DrawnPage& page, double y);

// Time, signal, a battery with its figure.
double drawStatusBar(DrawnPage& page, double y);

double drawTitle(DrawnPage& page, double y);
double drawRows(DrawnPage& page, double y);
double drawButtons(DrawnPage& page, double y);
double drawForm(DrawnPage& page, double y);
double drawKeypad(DrawnPage& page, double y);
double drawColumns(DrawnPage& page, double y);
double drawChips(DrawnPage& page, double y);
double drawTabs(DrawnPage& page, double y);
double drawBubbles(DrawnPage& page, double y);
double drawBigAmount(DrawnPage& page, double y);

// With pictures, in which much looks like text.
double drawChart(DrawnPage& page, double y);
double drawMap(DrawnPage& page, double y);
double drawPhoto(DrawnPage& page, double y);
double drawIconGrid(DrawnPage& page, double y);

}  // namespace tandrel

#pragma once
// One copy of the program at a time: a second copy brings the first one's
// window forward and ends.
#include "base/Types.h"

// Asks the copy that holds the instance marker to restore, raise and
// activate its window. When that copy has gone meanwhile, says "No previous
// instance found in gActivatePrevInstance!" in a box titled with the
// program's title (still empty this early in start-up).
void gActivatePrevInstance(ErrorFlag& bError);

#pragma once
// The run-time's list of open forms: a window adds itself when it is loaded
// and removes itself when it is unloaded.
#include <vector>

#include "platform/Control.h"

namespace ui {

void addOpenForm(Form* form);
void removeOpenForm(Form* form);
const std::vector<Form*>& openForms();

}  // namespace ui

#include "platform/Forms.h"

#include <algorithm>

namespace ui {

namespace {

std::vector<Form*>& forms()
{
    static std::vector<Form*> list;
    return list;
}

}  // namespace

void addOpenForm(Form* form)
{
    if (std::find(forms().begin(), forms().end(), form) == forms().end()) forms().push_back(form);
}

void removeOpenForm(Form* form) { std::erase(forms(), form); }

const std::vector<Form*>& openForms() { return forms(); }

}  // namespace ui

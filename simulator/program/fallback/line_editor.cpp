// For builds without libedit.

#include "simulator/program/line_editor.h"

namespace simulator {

bool CanEditLines() {
    return false;
}

std::unique_ptr<LineEditor> MakeLineEditor(LineEditor::Execute /*execute*/,
                                           LineEditor::Complete /*complete*/) {
    return nullptr;
}

}  // namespace simulator

#pragma once

#include "console/console_output.h"
#include "console/frames.h"
#include "console/table.h"

#include <unistd.h>

#include <cstddef>

namespace morvane {

/// Whether a menu goes on after a key's action.
enum class AfterKey { kGoOn, kLeave };

/// One line of a menu: the printed menu and what its keys do both come from these rows. A row
/// without text offers its key without showing it; a row without key draws a line of dashes.
template <typename Action>
struct MenuRow {
    char key = 0;
    const char* text = nullptr;
    Action action = nullptr;
    AfterKey after_key = AfterKey::kGoOn;
};

/// Whether each key stands in one row only: a second one would never be found.
template <typename Action, std::size_t N>
constexpr bool HasDistinctKeys(const MenuRow<Action> (&rows)[N]) {
    for (std::size_t i = 0; i < N; ++i) {
        for (std::size_t j = i + 1; j < N; ++j) {
            if (rows[i].key != 0 && rows[i].key == rows[j].key) {
                return false;
            }
        }
    }
    return true;
}

/// Prints the menu between its frames, under a heading if there is a title.
template <typename Action>
void PrintMenu(const char* title, Table<MenuRow<Action>> rows) {
    title == nullptr ? PrintStars() : PrintHeading(title);
    for (const MenuRow<Action>& row : rows) {
        if (row.key == 0) {
            PrintDashes();
        } else if (row.text != nullptr) {
            PROXY_Print(kNormal, " %c) %s\n", row.key, row.text);
        }
    }
    PrintStars();
}

/// The row that `key` selects, or null. A zero byte may be typed; it does not select the dashes.
template <typename Action>
const MenuRow<Action>* FindRow(Table<MenuRow<Action>> rows, char key) {
    for (const MenuRow<Action>& row : rows) {
        if (row.key == key && row.action != nullptr) {
            return &row;
        }
    }
    return nullptr;
}

/// Does what `key` asks for, or tells the operator that the menu has no such key.
template <typename Action, typename... Arguments>
AfterKey ActOnKey(Table<MenuRow<Action>> rows, char key, Arguments&... arguments) {
    const MenuRow<Action>* const row = FindRow(rows, key);
    if (row == nullptr) {
        PROXY_Print(kRed, "Invalid Selection\n");
        return AfterKey::kGoOn;
    }
    row->action(arguments...);
    return row->after_key;
}

/// Lets what the daemon has just announced be printed before a prompt is drawn.
inline void MenuPause() {
    usleep(200000);
}

}  // namespace morvane

#pragma once

#include "console/console_output.h"
#include "console/frames.h"
#include "console/table.h"

#include <unistd.h>

#include <cstddef>

namespace morvane {

/// Whether a menu continues after a key's action.
enum class AfterKey { kGoOn, kLeave };

/// One line of a menu and the action of its key. A row without text accepts its key but is not
/// printed; a row without key prints a line of dashes.
template <typename Action>
struct MenuRow {
    char key = 0;
    const char* text = nullptr;
    Action action = nullptr;
    AfterKey after_key = AfterKey::kGoOn;
};

/// Whether each key is in one row only: FindRow() finds the first.
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

/// Prints the menu, under a heading if `title` is not null.
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

/// The row of `key`, or null. A typed zero byte does not match the rows without key.
template <typename Action>
const MenuRow<Action>* FindRow(Table<MenuRow<Action>> rows, char key) {
    for (const MenuRow<Action>& row : rows) {
        if (row.key == key && row.action != nullptr) {
            return &row;
        }
    }
    return nullptr;
}

/// Runs the action of `key`, or prints that the menu has no such key.
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

/// Waits 200 ms so that notifications in flight are printed before the next prompt.
inline void MenuPause() {
    usleep(200000);
}

}  // namespace morvane

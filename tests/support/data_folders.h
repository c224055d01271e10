#pragma once

// The plug-in's data folders for one test: the user's, the machine-wide one and the documents, each
// pointed (by the variable the plug-in reads before the system's folders) into a fresh temporary
// folder, as "user", "common" and "docs", and unset again when the test ends. Fixtures inherit it
// for its `root`.

#include "tests/foundation/temp_folder.h"

struct private_data_folders {
    static constexpr const char* folders[][2] = {
        {"QUILLO_USER_DATA_DIR", "user"}, {"QUILLO_COMMON_DATA_DIR", "common"}, {"QUILLO_DOCS_DIR", "docs"}};

    private_data_folders() {
        for (const auto& [variable, folder] : folders)
            set_env(variable, (root / folder).to_string());
    }
    ~private_data_folders() {
        for (const auto& [variable, folder] : folders)
            unset_env(variable);
    }

    temp_folder root;
};

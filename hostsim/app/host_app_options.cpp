#include "hostsim/app/host_app_options.h"
#include "hostsim/sim_host.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>

HostAppOptions ParseHostAppOptions(int argc, char** argv) {
    HostAppOptions options;
    options.project = QUILLO_SAMPLE_PROJECT;
    options.plugins = QUILLO_PLUGINS_DIR;
    for (int i = 1; i < argc; ++i) {
        const std::string_view arg = argv[i];
        const char* value = i + 1 < argc ? argv[i + 1] : nullptr;
        std::string* target = nullptr;
        if (arg == "--project")
            target = &options.project;
        else if (arg == "--plugins")
            target = &options.plugins;
        else if (arg == "--root")
            target = &options.root;
        else if (arg == "--news-url")
            target = &options.newsUrl;
        else if (arg == "--record")
            target = &options.record;
        else if (arg == "--control") {
            options.control = true;
            continue;
        } else if (arg.substr(0, 2) == "-N" || arg.substr(0, 3) == "-GS") {
            ++i; // GNUstep's own defaults on the command line ("-NSFoo value")
            continue;
        }
        if (target == nullptr || value == nullptr) {
            std::fprintf(stderr, "usage: hostsim-app [--project file.json] [--plugins folder] "
                                 "[--root folder] [--news-url url] [--record file.json] [--control]\n");
            options.ok = false;
            return options;
        }
        *target = value;
        ++i;
    }
    if (options.root.empty() && (options.root = hostsim::NewTemporaryFolder("quillo-host")).empty()) {
        options.ok = false;
        return options;
    }
    if (options.record.empty())
        options.record = options.root + "/session.json";
    return options;
}

// A plug-in's resource file is whatever lies in a bundle's Resources folder: the reader stays inside
// the bytes for any offsets and counts, and the PiPL parser for any property list in it.

#include "fuzz/fuzz_support.h"
#include "hostsim/plugin_bundle.h"

FUZZ_TARGET() {
    const std::string_view fork = in.text();
    std::vector<std::string_view> resources;
    std::string error;
    const bool read = hostsim::ReadResources(fork, "PiPL", resources, error);
    check(read || !error.empty());
    for (std::string_view resource : resources) {
        check(resource.data() >= fork.data() &&
              resource.data() + resource.size() <= fork.data() + fork.size());
        hostsim::Pipl pipl;
        if (!hostsim::ParsePipl(resource, pipl, error))
            check(!error.empty());
        else
            check(pipl.kind.empty() || pipl.kind.size() == 4);
    }
    // The input taken as a PiPL resource itself, as a hand-edited resource file would hold, or as a
    // Windows DLL carries it (the form starting with a 16-bit 1; seed quillo_win.pipl).
    hostsim::Pipl pipl;
    hostsim::ParsePipl(fork, pipl, error);
}

#include "host/ae_version.h"

AeVersion AeVersionFromApi(int32_t major, int32_t minor) {
    switch (major) {
    case 115:
        return AeVersionCC2018;
    case 114:
        return AeVersionCC2017;
    case 113:
        return minor > 4 ? AeVersionCC2015 : AeVersionCC2014;
    case 112:
        return AeVersionCC;
    default:
        return AeVersionOther;
    }
}

bool IsExcludedHostApi(int32_t major) {
    return major == 111 || major == 17;
}

const char* AeVersionFolderName(AeVersion version) {
    switch (version) {
    case AeVersionCC2018:
        return "After Effects CC 2018";
    case AeVersionCC2017:
        return "After Effects CC 2017";
    case AeVersionCC2015:
        return "After Effects CC 2015";
    case AeVersionCC2014:
        return "After Effects CC 2014";
    case AeVersionCC:
        return "After Effects CC";
    case AeVersionCS6:
        return "After Effects CS6";
    case AeVersionCS5:
        return "After Effects CS5";
    case AeVersionOther:
        break;
    }
    return nullptr;
}

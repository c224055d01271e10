#pragma once

#include <cstdint>

// The host, classified by its plug-in API version. The user's preset folder is named after it.
enum AeVersion : int32_t {
    AeVersionCC2018 = 0,
    AeVersionCC2017 = 1,
    AeVersionCC2015 = 2,
    AeVersionCC2014 = 3,
    AeVersionCC = 4,
    AeVersionCS6 = 5,
    AeVersionCS5 = 6,
    AeVersionOther = 7, // newer or unknown: the folder name is derived from the host's bundle
};

// Maps the API version the host passes to the entry point.
AeVersion AeVersionFromApi(int32_t major, int32_t minor);

// API versions with which the plug-in stays out of the host entirely: the entry point succeeds and
// creates nothing.
bool IsExcludedHostApi(int32_t major);

// The host's folder name under Documents/Adobe, or null for AeVersionOther.
const char* AeVersionFolderName(AeVersion version);

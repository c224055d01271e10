#pragma once

// The host's plug-in interface as this program sees it. By default our own declarations; with
// QUILLO_OFFICIAL_HOST_SDK the host's published headers instead (CMake's QUILLO_HOST_SDK_DIR).

#if defined(QUILLO_OFFICIAL_HOST_SDK)
#include "AEConfig.h"
#include "AE_GeneralPlug.h" // brings the older suite generations too
#include "SPBasic.h"
#else
#include "host/sdk/ae_suites.h"
#endif

#include "host/native_application.h"

#include <dlfcn.h>

const NativeApplication* FindNativeApplication() {
    void* symbol = dlsym(RTLD_DEFAULT, QUILLO_NATIVE_APPLICATION_SYMBOL);
    return symbol != nullptr ? reinterpret_cast<NativeApplicationLookup>(symbol)() : nullptr;
}

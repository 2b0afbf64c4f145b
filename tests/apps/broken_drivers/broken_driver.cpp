// Libraries that look like drivers. Each is built with one of the macros.

#include <stdexcept>

#include <tarno2/IADCDevice.h>

#if defined(WITHOUT_FACTORY)

TARNO2_EXPORT int SomethingElse();

TARNO2_EXPORT int SomethingElse() {
    return 1;
}

#else

TARNO2_EXPORT void* TARNO2_CALL StaticFactory(const char* interfaceName, uint32_t flags);

TARNO2_EXPORT void* TARNO2_CALL StaticFactory(const char*, uint32_t) {
#if defined(THROWING)
    throw std::runtime_error("no board");
#else
    return nullptr;
#endif
}

#endif

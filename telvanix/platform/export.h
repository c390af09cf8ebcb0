// Symbol export for the telvanix library: only what carries TELVANIX_API is
// visible outside the shared object (the build uses -fvisibility=hidden).
#pragma once

#if defined(TELVANIX_STATIC)
#define TELVANIX_API
#elif defined(TELVANIX_BUILDING)
#define TELVANIX_API __attribute__((visibility("default")))
#else
#define TELVANIX_API __attribute__((visibility("default")))
#endif

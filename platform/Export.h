// Export.h - marks the symbols that the shared libraries export.  All others are hidden.
#pragma once

#if defined(_WIN32)
#if defined(ZOR_BUILDING_PLATFORM)
#define ZOR_PLATFORM_API __declspec(dllexport)
#else
#define ZOR_PLATFORM_API __declspec(dllimport)
#endif
#if defined(ZOR_BUILDING_LIBRARY)
#define ZOR_API __declspec(dllexport)
#elif defined(ZOR_LIBRARY_OBJECTS)  // linked statically into a program, as in the tests
#define ZOR_API
#else
#define ZOR_API __declspec(dllimport)
#endif
#else
#define ZOR_PLATFORM_API __attribute__((visibility("default")))
#define ZOR_API __attribute__((visibility("default")))
#endif

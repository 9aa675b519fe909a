#pragma once

// HANDSET_API marks what a shared build of the library exports; everything else stays hidden.
#if defined(HANDSET_SHARED)
#if defined(_WIN32)
#if defined(HANDSET_BUILDING)
#define HANDSET_API __declspec(dllexport)
#else
#define HANDSET_API __declspec(dllimport)
#endif
#else
#define HANDSET_API __attribute__((visibility("default")))
#endif
#else
#if defined(HANDSET_BUILDING) && !defined(_WIN32)
#define HANDSET_API __attribute__((visibility("default")))
#else
#define HANDSET_API
#endif
#endif

#pragma once

// Quorda's libraries are built with hidden symbols; QUORDA_API marks the classes and functions of the
// public headers that a program may use, so that a shared build exports exactly those.
#if defined(__GNUC__) || defined(__clang__)
#define QUORDA_API __attribute__((visibility("default")))
#else
#define QUORDA_API
#endif

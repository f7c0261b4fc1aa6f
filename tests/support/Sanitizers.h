#pragma once

// VELMORA_ADDRESS_SANITIZER and VELMORA_THREAD_SANITIZER: 1 where the program is built with it, else 0. GCC and Clang
// have names of their own for that.
#if defined(__has_feature)
#define VELMORA_ADDRESS_SANITIZER __has_feature(address_sanitizer)
#define VELMORA_THREAD_SANITIZER __has_feature(thread_sanitizer)
#else
#ifdef __SANITIZE_ADDRESS__
#define VELMORA_ADDRESS_SANITIZER 1
#else
#define VELMORA_ADDRESS_SANITIZER 0
#endif
#ifdef __SANITIZE_THREAD__
#define VELMORA_THREAD_SANITIZER 1
#else
#define VELMORA_THREAD_SANITIZER 0
#endif
#endif

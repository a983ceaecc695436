// SPDX-License-Identifier: Apache-2.0
/// The platform's key-value store (libvconf), as far as the engine calls it. C linkage.
#ifndef PLATFORM_VCONF_H
#define PLATFORM_VCONF_H

#ifdef __cplusplus
extern "C" {
#endif

/// One changed key as it is handed to a callback; owned by the library and valid during the callback only.
typedef struct _keynode_t {
  char* keyname;  ///< NUL-terminated
  int type;       ///< the store's own number for the value's type
  union {
    int i;
    int b;
    double d;
    char* s;  ///< NUL-terminated; the engine reads the value as text whatever `type` says
  } value;
  struct _keynode_t* next;
} keynode_t;

typedef void (*vconf_callback_fn)(keynode_t* node, void* user_data);

/// Calls `callback` for every value set from now on, also for one set while no main loop runs. Callbacks come one at a
/// time from the process's default GLib main context. Returns 0, or another value when the store refuses.
int vconf_notify_key_changed(const char* key, vconf_callback_fn callback, void* user_data);

/// Ends the subscription that was made with the same key and callback. Does not wait for a callback that is running.
/// Returns 0, or another value when there is no such subscription.
int vconf_ignore_key_changed(const char* key, vconf_callback_fn callback);

#ifdef __cplusplus
}

#include <cstddef>
static_assert(offsetof(keynode_t, keyname) == 0);
static_assert(offsetof(keynode_t, type) == sizeof(void*));
static_assert(offsetof(keynode_t, value) == (sizeof(void*) == 4 ? 8 : 16));
static_assert(offsetof(keynode_t, next) == (sizeof(void*) == 4 ? 16 : 24));
#endif

#endif

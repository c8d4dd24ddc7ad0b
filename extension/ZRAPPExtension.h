#pragma once

// The module's exported interface, as the host sees it. Both
// functions are exported under these plain names; nothing else is.

#include <stdint.h>

#ifdef __cplusplus
extern "C"
{
#endif

    // Slots of the request block: an array of pointers to NUL-terminated 8-bit
    // strings. Slots 1 and 2 are not used.
    enum
    {
        ZRAPP_REQUEST_URL = 0,    // the URL as the host received it
        ZRAPP_REQUEST_METHOD = 3, // "GET", "POST", ...
        ZRAPP_REQUEST_SLOTS = 4
    };

    // Serves one page. `request` is the request block above; on return `*text`
    // holds the address of the page text (as a 32-bit value) and `*length` its
    // length in bytes. The text belongs to the module: the host must not free
    // it, and it stays valid until the next call. The result is 0 when the module
    // produced the page, 1 when it did not (the URL is then "not found", and the
    // page is normally empty). One call at a time.
    //
    // What the host may get wrong, and what the module then does (it never
    // crashes or throws into the host):
    // - `request` null, or its URL slot null: result 1, empty page.
    // - A short block: the slots are read in order and a null slot ends the
    //   block, so the method (slot 3) is read only when slots 0 to 2 are all
    //   non-null; a missing method counts as "" (not "POST": the query is read).
    // - `text` or `length` null: that output is not written.
    // - Anything failing inside (an exception, e.g. out of memory): result 1,
    //   empty page.
    int32_t ZRAPPExtensionProc(const char* const* request, uint32_t* text, uint32_t* length);

    // Once-only start-up: reads the configuration file and starts the background
    // job. Idempotent; ZRAPPExtensionProc calls it first on every request.
    void InitializeLibrary(void);

    typedef int32_t (*ZRAPPExtensionProcFunction)(const char* const* request, uint32_t* text,
                                                  uint32_t* length);

#ifdef __cplusplus
}
#endif

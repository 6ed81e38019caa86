/*
 * The host settings interface of ZenkTranscoderLibrary.
 *
 * The transcoder imports one function from the ZenkHostSettings library:
 * ZenkGetHostSettings, export number 1 (imported by ordinal 1 on Windows, by
 * name on ELF systems). It takes no argument and returns the host's settings
 * object, or null when the host has none.
 *
 * Hosts replace the library with their own of the same file name
 * (ZenkHostSettings.dll, libZenkHostSettings.so) whose export 1 returns an
 * object laid out like ZenkHostSettingsObject below. The transcoder calls
 * only the object's second virtual function, with option 128: a nonzero
 * answer selects the full-swing chroma coefficient sets for full-range
 * conversions, zero the studio sets.
 *
 * The default library shipped with the transcoder answers option N with the
 * integer in the environment variable ZENK_HOST_OPTION_N, read at each query;
 * with the variable unset it answers 1 for option 128 and 0 for any other.
 * ZENK_HOST_SETTINGS=none makes ZenkGetHostSettings return null.
 */
#ifndef ZENK_HOST_SETTINGS_H
#define ZENK_HOST_SETTINGS_H

#include <stdint.h>

#if defined(_WIN32)
#define ZENK_SETTINGS_CALL __cdecl
#define ZENK_SETTINGS_API
#else
#if defined(__i386__)
#define ZENK_SETTINGS_CALL __attribute__((cdecl))
#else
#define ZENK_SETTINGS_CALL
#endif
#define ZENK_SETTINGS_API __attribute__((visibility("default")))
#endif

/* The option whose answer chooses the full-range chroma coefficient sets. */
#define ZENK_HOST_OPTION_FULL_SWING_CHROMA 128

#ifdef __cplusplus
/*
 * The settings object as the transcoder sees it: a table of virtual
 * functions whose first entry is a plain virtual function (never a
 * destructor, whose slots differ between compilers) and whose second answers
 * an option number.
 */
class ZenkHostSettingsObject {
public:
    virtual int32_t InterfaceVersion() = 0;
    virtual int32_t QueryOption(int32_t option) = 0;

protected:
    ~ZenkHostSettingsObject() = default;
};

extern "C" {
#else
typedef struct ZenkHostSettingsObject ZenkHostSettingsObject;
#endif

ZENK_SETTINGS_API ZenkHostSettingsObject* ZENK_SETTINGS_CALL ZenkGetHostSettings(void);

#ifdef __cplusplus
}
#endif

#endif /* ZENK_HOST_SETTINGS_H */

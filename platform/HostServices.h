#pragma once
// Everything that shows or asks something of the user, or reads the machine,
// goes through the one installed HostServices, so that the engine and the
// windows can be tested: the program installs the Qt host, tests install a
// scripted one (tests/support/ScriptedHost.h).
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace host {

// Message-box style values: buttons + icon + default button, added together.
enum MsgBoxStyle : std::int32_t {
    kOkOnly = 0,
    kOkCancel = 1,
    kAbortRetryIgnore = 2,
    kYesNoCancel = 3,
    kYesNo = 4,
    kRetryCancel = 5,
    kCritical = 16,
    kQuestion = 32,
    kExclamation = 48,
    kInformation = 64,
    kDefaultButton1 = 0,
    kDefaultButton2 = 256,
    kDefaultButton3 = 512,
};

// Message-box result codes.
enum MsgBoxResult : std::int16_t {
    kResultOk = 1,
    kResultCancel = 2,
    kResultAbort = 3,
    kResultRetry = 4,
    kResultIgnore = 5,
    kResultYes = 6,
    kResultNo = 7,
};

// What opening an address gives, as the desktop shell's open reports it: a
// value of kOpenDone or above when the address was handed to a program, a
// lower one saying why it was not.
inline constexpr std::int32_t kOpenDone = 33;
// No program is set up to open addresses of this kind (no browser, or no
// desktop opener at all).
inline constexpr std::int32_t kOpenNoAssociation = 31;

// Locale items by their published numbers.
enum class LocaleItem : std::int32_t {
    RegionCode = 5,         // the user's region, as a string of digits
    DecimalSeparator = 14,  // normally one character
};

// The kernel's release ("6.1.0-27-amd64") and version text, as uname gives
// them.
struct SystemVersion {
    std::string release;
    std::string version;
};

// One session of the settings store on an application key and section: the
// store is read once when the batch opens; get() answers from that reading,
// with the batch's own saves over it; commit() writes every save since the
// last commit in one go. The file is replaced whole, so a failed commit
// leaves it as it was and raises a run-time file error (61 disk full, 75
// path/file access) into the caller's trap; the saves stay in the batch, so
// a retry writes them again. Saves not committed when the batch goes are
// dropped.
class SettingsBatch {
public:
    virtual ~SettingsBatch() = default;
    virtual std::string get(const std::string& key, const std::string& defaultValue) = 0;
    virtual void save(const std::string& key, const std::string& value) = 0;
    virtual void commit() = 0;
};

class HostServices {
public:
    virtual ~HostServices() = default;

    // Shows a modal message box and returns the button chosen (1..7).
    virtual std::int16_t msgBox(const std::string& text, std::int32_t style,
                                const std::string& title) = 0;
    virtual void beep() = 0;
    // Milliseconds since an arbitrary start, wrapping at 2^32.
    virtual std::uint32_t tickCount() = 0;
    // The sleep every polling loop uses between two looks.
    virtual void sleep(std::uint32_t milliseconds) = 0;
    // One item of the user's locale; no value when it cannot be read.
    virtual std::optional<std::string> localeInfo(LocaleItem item) = 0;
    // The running kernel; no value when it cannot be read.
    virtual std::optional<SystemVersion> systemVersion() = 0;
    // The program's own file (the error log goes beside it when it can).
    virtual std::string programPath() = 0;

    // One copy of the program per user. previousInstance() tells whether an
    // earlier copy holds the per-user instance marker (asked at start; when
    // none does, this copy takes the marker). activatePreviousInstance() asks
    // that copy to bring its window forward; false when no copy answered.
    // A host without windows keeps no marker: every copy runs.
    virtual bool previousInstance() { return false; }
    virtual bool activatePreviousInstance() { return false; }

    // Per-user settings: string values addressed by application key, section
    // and key; the default comes back for a key that is not there. A batch
    // reads and writes many values in one go (opening an unreadable store
    // raises a run-time file error); the two one-value calls below make a
    // batch of their own.
    virtual std::unique_ptr<SettingsBatch> openSettings(const std::string& appKey,
                                                        const std::string& section) = 0;
    std::string getSetting(const std::string& appKey, const std::string& section,
                           const std::string& key, const std::string& defaultValue);
    void saveSetting(const std::string& appKey, const std::string& section,
                     const std::string& key, const std::string& value);
    // Opens an address in the user's browser: kOpenDone, or a failure code
    // below it. A host that offers no browser answers kOpenNoAssociation.
    virtual std::int32_t openAddress(const std::string& address);
    // Starts the desktop's system-information program, on its own; false
    // when none is installed or it would not start, or the host offers none.
    virtual bool startSystemInfo();
};

// The installed host; the system host (no windows) until one is installed.
HostServices& current();
// Installs a host for the whole process; nullptr goes back to the system host.
void install(HostServices* services);

// Shorthands for the installed host.
std::int16_t msgBox(const std::string& text, std::int32_t style = kOkOnly,
                    const std::string& title = {});
void beep();
std::uint32_t tickCount();
void sleep(std::uint32_t milliseconds);
std::int32_t openAddress(const std::string& address);
bool startSystemInfo();

// The answer a box of this style gives when nobody can be asked: its
// default button.
std::int16_t defaultAnswer(std::int32_t style);

}  // namespace host

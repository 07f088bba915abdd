#pragma once
// The engine's waits poll the host's sleep on the user-interface thread, for
// as long as a sweep pass (seconds) at a time. LiveWait is the sleep of the
// hosts with windows: before each sleep the window handles what is pending
// except user input, so it keeps painting, its timers run and the window
// system's own requests (expose, resize) are answered, while key presses,
// mouse clicks and the close button stay queued until the engine has
// returned.
//  - What a timer starts while a wait is under way must not re-enter the
//    engine: the controls consult waitUnderway() and hold off (afterWaits).
//  - Auto-repeated keys that piled up while a wait held the window are
//    dropped as they arrive, so that a key held during a long wait does not
//    turn into a queue of further waits.
#include <cstdint>
#include <functional>

#include <QObject>

namespace host {

class LiveWait : public QObject {
public:
    // Watches the application's key events: make it after the application.
    LiveWait();
    ~LiveWait() override;

    // Lets the window handle its pending events, user input excepted, then
    // sleeps with plainSleep (the host's own sleep, real or simulated).
    void sleep(std::uint32_t milliseconds, const std::function<void(std::uint32_t)>& plainSleep);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // The window-system time of the last key event delivered and the tick
    // count at its delivery: how the window system's clock maps onto ours.
    struct Anchor {
        std::uint32_t eventTime = 0;
        std::uint32_t tick = 0;
    };

    bool piledUp(std::uint32_t eventTime) const;

    Anchor anchor_;
    bool anchored_ = false;
    // Until when (in window-system time) the last wait held the window.
    std::uint32_t heldUntil_ = 0;
    bool held_ = false;
};

// True while a host sleep is letting the window handle its events.
bool waitUnderway();

// Runs action at the first turn of the event loop that is not inside a
// wait; dropped when context is deleted first.
void afterWaits(QObject* context, std::function<void()> action);

}  // namespace host

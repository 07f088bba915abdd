#include "platform/qt/LiveWait.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QTimer>

#include "platform/HostServices.h"

namespace host {

namespace {

int gWaitDepth = 0;

// Counts a wait under way while it lives.
class WaitScope {
public:
    WaitScope() { ++gWaitDepth; }
    ~WaitScope() { --gWaitDepth; }
    WaitScope(const WaitScope&) = delete;
    WaitScope& operator=(const WaitScope&) = delete;
};

// a is at or before b on a wrapping 32-bit millisecond clock.
bool notAfter(std::uint32_t a, std::uint32_t b) { return static_cast<std::int32_t>(a - b) <= 0; }

}  // namespace

LiveWait::LiveWait() { QCoreApplication::instance()->installEventFilter(this); }

LiveWait::~LiveWait()
{
    if (QCoreApplication::instance() != nullptr)
        QCoreApplication::instance()->removeEventFilter(this);
}

void LiveWait::sleep(std::uint32_t milliseconds,
                     const std::function<void(std::uint32_t)>& plainSleep)
{
    {
        const WaitScope scope;
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        plainSleep(milliseconds);
    }
    // The pass above took the dispatcher's wake-up for the input it left
    // queued: wake it again, or that input would wait for the next event
    // from elsewhere once the engine has returned.
    if (QAbstractEventDispatcher* dispatcher = QAbstractEventDispatcher::instance())
        dispatcher->wakeUp();
    if (!anchored_) return;
    heldUntil_ = anchor_.eventTime + (host::tickCount() - anchor_.tick);
    held_ = true;
}

bool LiveWait::piledUp(std::uint32_t eventTime) const
{
    return held_ && notAfter(eventTime, heldUntil_);
}

bool LiveWait::eventFilter(QObject*, QEvent* event)
{
    if (event->type() != QEvent::KeyPress && event->type() != QEvent::KeyRelease) return false;
    const auto* key = static_cast<const QKeyEvent*>(event);
    // Events made up without a time (by a program, not the window system)
    // cannot be placed.
    if (key->timestamp() == 0) return false;
    const auto eventTime = static_cast<std::uint32_t>(key->timestamp());
    if (key->isAutoRepeat() && piledUp(eventTime)) return true;  // dropped
    anchor_ = {eventTime, host::tickCount()};
    anchored_ = true;
    return false;
}

bool waitUnderway() { return gWaitDepth > 0; }

void afterWaits(QObject* context, std::function<void()> action)
{
    QTimer::singleShot(0, context, [context, action = std::move(action)]() mutable {
        if (waitUnderway()) {
            afterWaits(context, std::move(action));
            return;
        }
        action();
    });
}

}  // namespace host

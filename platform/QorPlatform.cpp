#include "QorPlatform.h"
#include "QorHeadless.h"
#include "sdl2/QorSdlPort.h"

#include <memory>

namespace
{
struct PortState
{
    bool chosen = false;
    QorPortKind kind = QorPortKind::kHeadless;
    std::unique_ptr<QorClock> clock;
    std::unique_ptr<QorVideoPort> video;
    std::unique_ptr<QorEventPort> events;
};

PortState& State()
{
    static PortState state;
    return state;
}
} // namespace

char QorSelectPort(QorPortKind kind, const char* videoDriver, const char* audioDriver)
{
    PortState& state = State();
    if (state.chosen || state.clock)
        return 0;
    if (kind == QorPortKind::kSdl2 && !qor::detail::StartSdl(videoDriver, audioDriver))
        return 0;
    state.kind = kind;
    state.chosen = true;
    return 1;
}

QorPortKind QorGetPortKind()
{
    return State().kind;
}

QorClock& QorGetClock()
{
    PortState& state = State();
    if (!state.clock)
    {
        // The first use fixes the port: a later QorSelectPort is refused.
        state.chosen = true;
        if (state.kind == QorPortKind::kSdl2)
            state.clock = qor::detail::MakeSdlClock();
        else
            state.clock = std::make_unique<QorManualClock>();
    }
    return *state.clock;
}

QorManualClock* QorGetManualClock()
{
    return dynamic_cast<QorManualClock*>(&QorGetClock());
}

QorVideoPort& QorGetVideoPort()
{
    PortState& state = State();
    if (!state.video)
    {
        state.chosen = true;
        if (state.kind == QorPortKind::kSdl2)
            state.video = qor::detail::MakeSdlVideoPort();
        else
            state.video = std::make_unique<QorHeadlessVideoPort>();
    }
    return *state.video;
}

QorEventPort& QorGetEventPort()
{
    PortState& state = State();
    if (!state.events)
    {
        state.chosen = true;
        if (state.kind == QorPortKind::kSdl2)
            state.events = qor::detail::MakeSdlEventPort();
        else
            state.events = std::make_unique<QorHeadlessEventPort>();
    }
    return *state.events;
}

#include "QorSdlPort.h"

#include <SDL.h>

namespace qor::detail
{
namespace
{
class SdlClock : public QorClock
{
public:
    unsigned long GetMillis() override { return SDL_GetTicks64(); }
    void Delay(unsigned long ms) override { SDL_Delay(static_cast<Uint32>(ms)); }
};
} // namespace

bool StartSdl(const char* videoDriver, const char* audioDriver)
{
    if (videoDriver)
        SDL_SetHint(SDL_HINT_VIDEODRIVER, videoDriver);
    if (audioDriver)
        SDL_SetHint(SDL_HINT_AUDIODRIVER, audioDriver);
    return SDL_InitSubSystem(SDL_INIT_TIMER | SDL_INIT_EVENTS) == 0;
}

std::unique_ptr<QorClock> MakeSdlClock()
{
    return std::make_unique<SdlClock>();
}
} // namespace qor::detail

namespace qor::detail
{
void StopSdl()
{
    if (SDL_WasInit(0))
        SDL_Quit();
}
} // namespace qor::detail

// The SDL2 display: one window, renderer and streaming texture per window; message boxes and text input.
#include "platform/PlatformInternal.h"
#include "platform/QorGdi.h"
#include "platform/sdl2/QorSdlPort.h"
#include "platform/sdl2/QorSdlWindow.h"
#include "platform/sdl2/SdlInternal.h"

#include <SDL.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace qor::detail
{
namespace
{
// The key under which an SDL window keeps its port.
const char* const kPortKey = "qor.port";

class SdlVideoPort;

class SdlWindowPort : public QorWindowPort
{
public:
    explicit SdlWindowPort(SdlVideoPort* owner) : m_owner(owner) {}
    ~SdlWindowPort() override;

    char Open(long width, long height, const char* title) override;
    void Close() override;
    void SetTitle(const char* title) override
    {
        if (m_window)
            SDL_SetWindowTitle(m_window, title ? title : "");
    }
    char Present(long x, long y, long w, long h, const unsigned char* frame, long pitch) override;

    /// The video port is going away: close, and do not call it again.
    void Orphan()
    {
        Close();
        m_owner = nullptr;
    }
    SDL_Window* GetWindow() const { return m_window; }
    COLORREF ReadPixel(long x, long y);

private:
    SdlVideoPort* m_owner;
    SDL_Window* m_window = nullptr;
    SDL_Renderer* m_renderer = nullptr;
    SDL_Texture* m_texture = nullptr;
    long m_width = 0;
    long m_height = 0;
};

class SdlVideoPort : public QorVideoPort
{
public:
    SdlVideoPort()
    {
        m_video = SDL_InitSubSystem(SDL_INIT_VIDEO) == 0;
        // Both ports start with the input method off: characters then come from the key-down messages.
        if (m_video)
            SDL_StopTextInput();
        RegisterPlatformShutdown();
    }
    ~SdlVideoPort() override
    {
        for (SdlWindowPort* window : m_windows)
            window->Orphan();
        m_windows.clear();
        if (m_video)
            SDL_QuitSubSystem(SDL_INIT_VIDEO);
    }

    std::unique_ptr<QorWindowPort> CreateWindowPort() override
    {
        auto window = std::make_unique<SdlWindowPort>(this);
        m_windows.push_back(window.get());
        return window;
    }
    void GetScreenSize(long& width, long& height) override
    {
        SDL_DisplayMode mode;
        if (m_video && SDL_GetDesktopDisplayMode(0, &mode) == 0)
        {
            width = mode.w;
            height = mode.h;
        }
        else
        {
            width = 0;
            height = 0;
        }
    }
    int ShowMessageBox(QorWindowPort* parent, const char* text, const char* caption, const char* const* buttons,
                       int buttonCount) override
    {
        std::vector<SDL_MessageBoxButtonData> data;
        for (int i = 0; i < buttonCount; ++i)
        {
            Uint32 flags = 0;
            if (i == 0)
                flags |= SDL_MESSAGEBOX_BUTTON_RETURNKEY_DEFAULT;
            if (i == buttonCount - 1)
                flags |= SDL_MESSAGEBOX_BUTTON_ESCAPEKEY_DEFAULT;
            data.push_back(SDL_MessageBoxButtonData{flags, i, buttons[i]});
        }
        auto* window = dynamic_cast<SdlWindowPort*>(parent);
        const SDL_MessageBoxData box = {SDL_MESSAGEBOX_INFORMATION,
                                        window ? window->GetWindow() : nullptr,
                                        caption,
                                        text,
                                        buttonCount,
                                        data.data(),
                                        nullptr};
        int chosen = -1;
        if (SDL_ShowMessageBox(&box, &chosen) != 0)
            return -1;
        return chosen < 0 ? buttonCount - 1 : chosen;
    }
    void StartTextInput() override { SDL_StartTextInput(); }
    void StopTextInput() override { SDL_StopTextInput(); }
    char IsTextInputActive() override { return SDL_IsTextInputActive() ? 1 : 0; }

    bool HasVideo() const { return m_video; }
    void Forget(SdlWindowPort* window)
    {
        m_windows.erase(std::remove(m_windows.begin(), m_windows.end(), window), m_windows.end());
    }

private:
    bool m_video = false;
    std::vector<SdlWindowPort*> m_windows;
};

SdlWindowPort::~SdlWindowPort()
{
    Close();
    if (m_owner)
        m_owner->Forget(this);
}

char SdlWindowPort::Open(long width, long height, const char* title)
{
    if (m_window || !m_owner || !m_owner->HasVideo() || width < 1 || height < 1)
        return 0;
    m_window = SDL_CreateWindow(title ? title : "", SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED, int(width),
                                int(height), SDL_WINDOW_SHOWN);
    if (!m_window)
        return 0;
    SDL_SetWindowData(m_window, kPortKey, this);
    m_renderer = SDL_CreateRenderer(m_window, -1, 0);
    if (!m_renderer)
        m_renderer = SDL_CreateRenderer(m_window, -1, SDL_RENDERER_SOFTWARE);
    if (m_renderer)
        m_texture =
            SDL_CreateTexture(m_renderer, SDL_PIXELFORMAT_RGB888, SDL_TEXTUREACCESS_STREAMING, int(width), int(height));
    if (!m_texture)
    {
        Close();
        return 0;
    }
    m_width = width;
    m_height = height;
    // The texture starts black, like the frame.
    std::vector<Uint32> black(static_cast<std::size_t>(width * height), 0);
    SDL_UpdateTexture(m_texture, nullptr, black.data(), int(width * 4));
    SDL_RenderClear(m_renderer);
    SDL_RenderCopy(m_renderer, m_texture, nullptr, nullptr);
    SDL_RenderPresent(m_renderer);
    return 1;
}

void SdlWindowPort::Close()
{
    if (m_texture)
        SDL_DestroyTexture(m_texture);
    if (m_renderer)
        SDL_DestroyRenderer(m_renderer);
    if (m_window)
        SDL_DestroyWindow(m_window);
    m_texture = nullptr;
    m_renderer = nullptr;
    m_window = nullptr;
}

char SdlWindowPort::Present(long x, long y, long w, long h, const unsigned char* frame, long pitch)
{
    if (!m_texture || !frame || w < 1 || h < 1)
        return 0;
    const SDL_Rect area = {int(x), int(y), int(w), int(h)};
    if (SDL_UpdateTexture(m_texture, &area, frame + y * pitch + x * 4, int(pitch)) != 0)
        return 0;
    // The back buffer is undefined after a present, so the whole texture is drawn every time.
    SDL_RenderCopy(m_renderer, m_texture, nullptr, nullptr);
    SDL_RenderPresent(m_renderer);
    return 1;
}

COLORREF SdlWindowPort::ReadPixel(long x, long y)
{
    if (!m_texture || x < 0 || y < 0 || x >= m_width || y >= m_height)
        return CLR_INVALID;
    SDL_RenderCopy(m_renderer, m_texture, nullptr, nullptr);
    const SDL_Rect area = {int(x), int(y), 1, 1};
    Uint32 pixel = 0;
    if (SDL_RenderReadPixels(m_renderer, &area, SDL_PIXELFORMAT_ARGB8888, &pixel, 4) != 0)
        return CLR_INVALID;
    return RGB(BYTE(pixel >> 16), BYTE(pixel >> 8), BYTE(pixel));
}

SdlWindowPort* PortOf(HWND window)
{
    WindowRecord* record = FindWindowRecord(window);
    return record ? dynamic_cast<SdlWindowPort*>(record->port.get()) : nullptr;
}
} // namespace

std::unique_ptr<QorVideoPort> MakeSdlVideoPort()
{
    return std::make_unique<SdlVideoPort>();
}

HWND WindowOfSdlId(std::uint32_t id)
{
    SDL_Window* window = SDL_GetWindowFromID(id);
    if (!window)
        return nullptr;
    auto* port = static_cast<SdlWindowPort*>(SDL_GetWindowData(window, kPortKey));
    return port ? port->GetHandle() : nullptr;
}
} // namespace qor::detail

SDL_Window* QorSdlGetWindow(HWND window)
{
    qor::detail::SdlWindowPort* port = qor::detail::PortOf(window);
    return port ? port->GetWindow() : nullptr;
}

COLORREF QorSdlReadPresentedPixel(HWND window, long x, long y)
{
    qor::detail::SdlWindowPort* port = qor::detail::PortOf(window);
    return port ? port->ReadPixel(x, y) : CLR_INVALID;
}

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
    void SetScaling(QorScaleMode mode) override;
    RECT GetViewport() override;
    bool PointToClient(long x, long y, long& cx, long& cy, bool nearest) override;
    char SetResizable(bool resizable) override;
    char SetFullscreen(bool fullscreen) override;
    char IsFullscreen() override;
    void SetTextInputArea(const RECT& area) override;

    /// The video port is going away: close, and do not call it again.
    void Orphan()
    {
        Close();
        m_owner = nullptr;
    }
    SDL_Window* GetWindow() const { return m_window; }
    COLORREF ReadPixel(long x, long y);
    COLORREF ReadOutputPixel(long px, long py);

    /// The area last given to SDL for the input method's candidate window, in window points.
    const SDL_Rect& GetTextInputRect() const { return m_textInputRect; }

private:
    /// The drawable's size, the window's size in points and where the client area lies in the drawable.
    struct Layout
    {
        int outW = 0;
        int outH = 0;
        int winW = 0;
        int winH = 0;
        RECT viewport = {0, 0, 0, 0};
    };
    /// False when there is no renderer or the drawable's size cannot be read.
    bool GetLayout(Layout& layout) const;
    /// Draws the client area into its viewport and the bars around it, without presenting.
    bool Render();
    /// The letterboxed picture: the frame stretched to the viewport's size by the viewport's formulas.
    bool Stretch(const RECT& viewport);

    SdlVideoPort* m_owner;
    SDL_Window* m_window = nullptr;
    SDL_Renderer* m_renderer = nullptr;
    SDL_Texture* m_texture = nullptr;
    SDL_Texture* m_stretched = nullptr;
    long m_stretchedW = 0;
    long m_stretchedH = 0;
    const unsigned char* m_frame = nullptr;
    long m_pitch = 0;
    long m_width = 0;
    long m_height = 0;
    SDL_Rect m_textInputRect = {0, 0, 0, 0};
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
    // The client area is scaled by whole pixels (or by the letterbox stretch done here), never smoothed.
    SDL_SetHint(SDL_HINT_RENDER_SCALE_QUALITY, "nearest");
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
    if (m_stretched)
        SDL_DestroyTexture(m_stretched);
    m_stretched = nullptr;
    m_stretchedW = m_stretchedH = 0;
    m_frame = nullptr;
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
    m_frame = frame;
    m_pitch = pitch;
    // The back buffer is undefined after a present, so the whole output is drawn every time.
    if (!Render())
        return 0;
    SDL_RenderPresent(m_renderer);
    return 1;
}

bool SdlWindowPort::GetLayout(Layout& layout) const
{
    if (!m_window || !m_renderer || SDL_GetRendererOutputSize(m_renderer, &layout.outW, &layout.outH) != 0)
        return false;
    SDL_GetWindowSize(m_window, &layout.winW, &layout.winH);
    layout.viewport = ComputeViewport(m_width, m_height, layout.outW, layout.outH, GetScaling());
    return true;
}

RECT SdlWindowPort::GetViewport()
{
    Layout layout;
    return GetLayout(layout) ? layout.viewport : RECT{0, 0, LONG(m_width), LONG(m_height)};
}

bool SdlWindowPort::Stretch(const RECT& viewport)
{
    const long w = viewport.right - viewport.left;
    const long h = viewport.bottom - viewport.top;
    if (!m_frame)
        return false;
    if (!m_stretched || m_stretchedW != w || m_stretchedH != h)
    {
        if (m_stretched)
            SDL_DestroyTexture(m_stretched);
        m_stretched =
            SDL_CreateTexture(m_renderer, SDL_PIXELFORMAT_RGB888, SDL_TEXTUREACCESS_STREAMING, int(w), int(h));
        m_stretchedW = m_stretched ? w : 0;
        m_stretchedH = m_stretched ? h : 0;
        if (!m_stretched)
            return false;
    }
    void* pixels = nullptr;
    int pitch = 0;
    if (SDL_LockTexture(m_stretched, nullptr, &pixels, &pitch) != 0)
        return false;
    // Output pixel (X, Y) of the viewport shows client pixel (X * width / w, Y * height / h): the formula
    // the mouse is mapped back with.
    std::vector<long> columns(static_cast<std::size_t>(w));
    for (long X = 0; X < w; ++X)
        columns[static_cast<std::size_t>(X)] = X * m_width / w;
    for (long Y = 0; Y < h; ++Y)
    {
        const auto* in = reinterpret_cast<const Uint32*>(m_frame + (Y * m_height / h) * m_pitch);
        auto* out = reinterpret_cast<Uint32*>(static_cast<unsigned char*>(pixels) + Y * pitch);
        for (long X = 0; X < w; ++X)
            out[X] = in[columns[static_cast<std::size_t>(X)]];
    }
    SDL_UnlockTexture(m_stretched);
    return true;
}

bool SdlWindowPort::Render()
{
    Layout layout;
    if (!m_texture || !GetLayout(layout))
        return false;
    const int outW = layout.outW;
    const int outH = layout.outH;
    const RECT& v = layout.viewport;
    const SDL_Rect dest = {int(v.left), int(v.top), int(v.right - v.left), int(v.bottom - v.top)};
    // Only the bars are cleared: clearing the whole output would cost as much as drawing it again.
    SDL_SetRenderDrawColor(m_renderer, 0, 0, 0, 255);
    const SDL_Rect bars[4] = {{0, 0, outW, std::max(0, dest.y)},
                              {0, dest.y + dest.h, outW, std::max(0, outH - dest.y - dest.h)},
                              {0, dest.y, std::max(0, dest.x), dest.h},
                              {dest.x + dest.w, dest.y, std::max(0, outW - dest.x - dest.w), dest.h}};
    for (const SDL_Rect& bar : bars)
        if (bar.w > 0 && bar.h > 0)
            SDL_RenderFillRect(m_renderer, &bar);
    const bool stretched = GetScaling() == QorScaleMode::kLetterbox && (dest.w != m_width || dest.h != m_height);
    if (stretched && Stretch(v))
        return SDL_RenderCopy(m_renderer, m_stretched, nullptr, &dest) == 0;
    return SDL_RenderCopy(m_renderer, m_texture, nullptr, &dest) == 0;
}

void SdlWindowPort::SetScaling(QorScaleMode mode)
{
    QorWindowPort::SetScaling(mode);
    if (m_frame && Render())
        SDL_RenderPresent(m_renderer);
}

bool SdlWindowPort::PointToClient(long x, long y, long& cx, long& cy, bool nearest)
{
    Layout layout;
    if (!GetLayout(layout))
        return false;
    long px = 0;
    long py = 0;
    PointToOutput(x, y, layout.winW, layout.winH, layout.outW, layout.outH, px, py);
    const RECT& v = layout.viewport;
    if (nearest)
    {
        px = std::clamp<long>(px, v.left, v.right - 1);
        py = std::clamp<long>(py, v.top, v.bottom - 1);
    }
    return OutputToClient(v, m_width, m_height, px, py, cx, cy);
}

char SdlWindowPort::SetResizable(bool resizable)
{
    if (!m_window)
        return 0;
    SDL_SetWindowResizable(m_window, resizable ? SDL_TRUE : SDL_FALSE);
    return 1;
}

char SdlWindowPort::SetFullscreen(bool fullscreen)
{
    if (!m_window || SDL_SetWindowFullscreen(m_window, fullscreen ? SDL_WINDOW_FULLSCREEN_DESKTOP : 0) != 0)
        return 0;
    if (m_frame && Render())
        SDL_RenderPresent(m_renderer);
    return 1;
}

char SdlWindowPort::IsFullscreen()
{
    return m_window && (SDL_GetWindowFlags(m_window) & SDL_WINDOW_FULLSCREEN_DESKTOP) == SDL_WINDOW_FULLSCREEN_DESKTOP;
}

void SdlWindowPort::SetTextInputArea(const RECT& area)
{
    // Client coordinates to window points, through the viewport and the drawable's scale.
    Layout layout;
    if (!GetLayout(layout) || layout.outW < 1 || layout.outH < 1)
        return;
    const RECT& v = layout.viewport;
    const auto toX = [&](long x)
    { return int((v.left + x * (v.right - v.left) / std::max(1L, m_width)) * layout.winW / layout.outW); };
    const auto toY = [&](long y)
    { return int((v.top + y * (v.bottom - v.top) / std::max(1L, m_height)) * layout.winH / layout.outH); };
    m_textInputRect = {toX(area.left), toY(area.top), toX(area.right) - toX(area.left),
                       toY(area.bottom) - toY(area.top)};
    SDL_SetTextInputRect(&m_textInputRect);
}

COLORREF SdlWindowPort::ReadOutputPixel(long px, long py)
{
    Layout layout;
    if (!m_texture || !GetLayout(layout) || px < 0 || py < 0 || px >= layout.outW || py >= layout.outH || !Render())
        return CLR_INVALID;
    const SDL_Rect area = {int(px), int(py), 1, 1};
    Uint32 pixel = 0;
    if (SDL_RenderReadPixels(m_renderer, &area, SDL_PIXELFORMAT_ARGB8888, &pixel, 4) != 0)
        return CLR_INVALID;
    return RGB(BYTE(pixel >> 16), BYTE(pixel >> 8), BYTE(pixel));
}

COLORREF SdlWindowPort::ReadPixel(long x, long y)
{
    if (!m_texture || x < 0 || y < 0 || x >= m_width || y >= m_height)
        return CLR_INVALID;
    // The first output pixel that shows client pixel (x, y).
    const RECT v = GetViewport();
    const long w = v.right - v.left;
    const long h = v.bottom - v.top;
    return ReadOutputPixel(v.left + (x * w + m_width - 1) / m_width, v.top + (y * h + m_height - 1) / m_height);
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

BOOL QorSdlGetTextInputArea(HWND window, RECT* area)
{
    qor::detail::SdlWindowPort* port = qor::detail::PortOf(window);
    if (!port || !area)
        return FALSE;
    const SDL_Rect& r = port->GetTextInputRect();
    *area = RECT{LONG(r.x), LONG(r.y), LONG(r.x + r.w), LONG(r.y + r.h)};
    return TRUE;
}

COLORREF QorSdlReadOutputPixel(HWND window, long px, long py)
{
    qor::detail::SdlWindowPort* port = qor::detail::PortOf(window);
    return port ? port->ReadOutputPixel(px, py) : CLR_INVALID;
}

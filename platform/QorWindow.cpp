// Windows: the records behind window handles, their frames and presentation, CWnd, and the orderly
// shut-down of the platform's libraries at exit.
#include "platform/QorWindow.h"

#include "platform/GdiInternal.h"
#include "platform/PlatformInternal.h"
#include "platform/QorPlatform.h"
#include "platform/sdl2/QorSdlPort.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace qor::detail
{
namespace
{
struct WindowTable
{
    std::map<HWND, std::unique_ptr<WindowRecord>> windows;
    std::uintptr_t lastHandle = 0;
};

// Never destroyed, like the drawing objects: a window may be destroyed by an object that outlives the
// others at exit.
WindowTable& Windows()
{
    static WindowTable* table = new WindowTable();
    return *table;
}

void ShutDownPlatform()
{
    CloseAllWindowPorts();
    ShutDownTextRaster();
    ShutDownSdlImage();
    ShutDownFontConfig();
    StopSdl();
}
} // namespace

WindowRecord* FindWindowRecord(HWND window)
{
    auto& windows = Windows().windows;
    const auto it = windows.find(window);
    return it == windows.end() ? nullptr : it->second.get();
}

PixelView FrameView(WindowRecord& window)
{
    PixelView view;
    view.top = window.frame;
    view.pitch = window.width * 4;
    view.width = window.width;
    view.height = window.height;
    view.bitsPerPixel = 32;
    return view;
}

void PresentArea(WindowRecord& window, const RECT& area)
{
    const long left = std::max<long>(area.left, 0);
    const long top = std::max<long>(area.top, 0);
    const long right = std::min<long>(area.right, window.width);
    const long bottom = std::min<long>(area.bottom, window.height);
    if (!window.port || left >= right || top >= bottom)
        return;
    window.port->Present(left, top, right - left, bottom - top, window.frame, window.width * 4);
}

void RepaintWindow(HWND window)
{
    if (WindowRecord* record = FindWindowRecord(window))
        PresentArea(*record, RECT{0, 0, LONG(record->width), LONG(record->height)});
}

void CloseAllWindowPorts()
{
    for (auto& entry : Windows().windows)
        if (entry.second->port)
            entry.second->port->Close();
}

void RegisterPlatformShutdown()
{
    static bool registered = false;
    if (registered)
        return;
    registered = true;
    std::atexit(ShutDownPlatform);
}
} // namespace qor::detail

using namespace qor::detail;

BOOL DestroyWindow(HWND window)
{
    WindowRecord* record = FindWindowRecord(window);
    if (!record)
        return FALSE;
    SendMessageA(window, WM_DESTROY, 0, 0);
    // The procedure may have destroyed the window itself.
    record = FindWindowRecord(window);
    if (!record)
        return TRUE;
    ForgetWindowMessages(window);
    if (record->port)
        record->port->Close();
    if (record->owner)
        record->owner->m_hWnd = nullptr;
    Windows().windows.erase(window);
    return TRUE;
}

BOOL IsWindow(HWND window)
{
    return FindWindowRecord(window) ? TRUE : FALSE;
}

BOOL GetClientRect(HWND window, RECT* rect)
{
    WindowRecord* record = FindWindowRecord(window);
    if (!record || !rect)
        return FALSE;
    *rect = RECT{0, 0, LONG(record->width), LONG(record->height)};
    return TRUE;
}

LRESULT DefWindowProcA(HWND window, UINT message, WPARAM, LPARAM)
{
    if (message == WM_CLOSE)
        DestroyWindow(window);
    return 0;
}

CWnd::~CWnd()
{
    if (m_hWnd)
        ::DestroyWindow(m_hWnd);
}

BOOL CWnd::Create(const char* title, int width, int height)
{
    if (m_hWnd || width < 1 || height < 1)
        return FALSE;
    auto record = std::make_unique<WindowRecord>();
    record->port = QorGetVideoPort().CreateWindowPort();
    const std::string utf8 = title ? Big5ToUtf8(title, std::strlen(title)) : std::string();
    if (!record->port || !record->port->Open(width, height, utf8.c_str()))
        return FALSE;
    record->width = width;
    record->height = height;
    // Drawing goes straight into the port's frame where it has one: presenting is then one pass.
    record->frame = record->port->GetFrame();
    if (!record->frame)
    {
        record->ownFrame.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4, 0);
        record->frame = record->ownFrame.data();
    }
    record->owner = this;
    // Handles look like the pointers they stand for and are never reused.
    WindowTable& table = Windows();
    table.lastHandle += 0x10;
    record->handle = reinterpret_cast<HWND>(table.lastHandle);
    record->port->SetHandle(record->handle);
    m_hWnd = record->handle;
    table.windows.emplace(record->handle, std::move(record));
    RegisterPlatformShutdown();
    return TRUE;
}

BOOL CWnd::DestroyWindow()
{
    return m_hWnd ? ::DestroyWindow(m_hWnd) : FALSE;
}

CWnd* CWnd::FromHandle(HWND window)
{
    WindowRecord* record = FindWindowRecord(window);
    return record ? record->owner : nullptr;
}

void CWnd::GetClientRect(RECT* rect) const
{
    if (!::GetClientRect(m_hWnd, rect) && rect)
        *rect = RECT{0, 0, 0, 0};
}

void CWnd::SetWindowText(const char* title)
{
    WindowRecord* record = FindWindowRecord(m_hWnd);
    if (record && record->port)
        record->port->SetTitle(title ? Big5ToUtf8(title, std::strlen(title)).c_str() : "");
}

CDC* CWnd::GetDC()
{
    HDC dc = ::GetDC(m_hWnd);
    if (!dc)
        return nullptr;
    CDC* wrapper = new CDC();
    wrapper->Attach(dc);
    return wrapper;
}

int CWnd::ReleaseDC(CDC* dc)
{
    if (!dc)
        return 0;
    const int released = ::ReleaseDC(m_hWnd, dc->Detach());
    delete dc;
    return released;
}

UINT_PTR CWnd::SetTimer(UINT_PTR id, UINT elapse, TIMERPROC callback)
{
    return ::SetTimer(m_hWnd, id, elapse, callback);
}

BOOL CWnd::KillTimer(UINT_PTR id)
{
    return ::KillTimer(m_hWnd, id);
}

int CWnd::MessageBox(const char* text, const char* caption, UINT type)
{
    return MessageBoxA(m_hWnd, text, caption, type);
}

LRESULT CWnd::SendMessage(UINT message, WPARAM wParam, LPARAM lParam)
{
    return SendMessageA(m_hWnd, message, wParam, lParam);
}

BOOL CWnd::PostMessage(UINT message, WPARAM wParam, LPARAM lParam)
{
    return m_hWnd ? PostMessageA(m_hWnd, message, wParam, lParam) : FALSE;
}

LRESULT CWnd::WindowProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    if (m_procedure)
        return m_procedure(m_hWnd, message, wParam, lParam);
    return DefWindowProcA(m_hWnd, message, wParam, lParam);
}

WNDPROC CWnd::SetWindowProc(WNDPROC procedure)
{
    return std::exchange(m_procedure, procedure);
}

BOOL QorSetWindowScaling(HWND window, QorScaleMode mode)
{
    WindowRecord* record = FindWindowRecord(window);
    if (!record || !record->port)
        return FALSE;
    record->port->SetScaling(mode);
    return TRUE;
}

QorScaleMode QorGetWindowScaling(HWND window)
{
    WindowRecord* record = FindWindowRecord(window);
    return record && record->port ? record->port->GetScaling() : QorScaleMode::kOneToOne;
}

BOOL QorGetWindowViewport(HWND window, RECT* viewport)
{
    WindowRecord* record = FindWindowRecord(window);
    if (!record || !record->port || !viewport)
        return FALSE;
    *viewport = record->port->GetViewport();
    return TRUE;
}

BOOL QorSetWindowResizable(HWND window, BOOL resizable)
{
    WindowRecord* record = FindWindowRecord(window);
    return record && record->port && record->port->SetResizable(resizable != FALSE) ? TRUE : FALSE;
}

BOOL QorSetWindowFullscreen(HWND window, BOOL fullscreen)
{
    WindowRecord* record = FindWindowRecord(window);
    return record && record->port && record->port->SetFullscreen(fullscreen != FALSE) ? TRUE : FALSE;
}

BOOL QorIsWindowFullscreen(HWND window)
{
    WindowRecord* record = FindWindowRecord(window);
    return record && record->port && record->port->IsFullscreen() ? TRUE : FALSE;
}

namespace
{
bool g_fullscreenToggle = true;
} // namespace

void QorSetFullscreenToggle(BOOL enabled)
{
    g_fullscreenToggle = enabled != FALSE;
}

BOOL QorIsFullscreenToggleOn()
{
    return g_fullscreenToggle ? TRUE : FALSE;
}


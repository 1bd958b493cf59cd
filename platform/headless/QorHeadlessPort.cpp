// The headless port: frames kept in memory, message boxes logged, input from a script on the manual clock.
#include "platform/GdiInternal.h"
#include "platform/PlatformInternal.h"
#include "platform/QorGdi.h"
#include "platform/QorHeadless.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

char QorHeadlessWindowPort::Open(long width, long height, const char* title)
{
    if (width < 1 || height < 1)
        return 0;
    m_width = width;
    m_height = height;
    m_title = title ? title : "";
    m_frame.assign(static_cast<std::size_t>(width * height * 4), 0);
    m_open = true;
    return 1;
}

char QorHeadlessWindowPort::Present(long x, long y, long w, long h, const unsigned char* frame, long pitch)
{
    if (!m_open || !frame || x < 0 || y < 0 || w < 1 || h < 1 || x + w > m_width || y + h > m_height)
        return 0;
    if (frame != m_frame.data())
        for (long row = y; row < y + h; ++row)
            std::memcpy(m_frame.data() + (row * m_width + x) * 4, frame + row * pitch + x * 4,
                        static_cast<std::size_t>(w * 4));
    ++m_presents;
    m_lastArea = RECT{LONG(x), LONG(y), LONG(x + w), LONG(y + h)};
    return 1;
}

COLORREF QorHeadlessWindowPort::GetPresentedPixel(long x, long y) const
{
    if (x < 0 || y < 0 || x >= m_width || y >= m_height)
        return CLR_INVALID;
    const unsigned char* p = m_frame.data() + (y * m_width + x) * 4;
    return RGB(p[2], p[1], p[0]);
}

std::unique_ptr<QorWindowPort> QorHeadlessVideoPort::CreateWindowPort()
{
    return std::make_unique<QorHeadlessWindowPort>();
}

void QorHeadlessVideoPort::GetScreenSize(long& width, long& height)
{
    width = m_screenWidth;
    height = m_screenHeight;
}

int QorHeadlessVideoPort::ShowMessageBox(QorWindowPort*, const char* text, const char* caption, const char* const*,
                                         int buttonCount)
{
    m_lastText = text ? text : "";
    m_lastCaption = caption ? caption : "";
    ++m_boxes;
    std::fprintf(stderr, "%s: %s\n", m_lastCaption.c_str(), m_lastText.c_str());
    return buttonCount > 0 ? 0 : -1;
}

void QorHeadlessVideoPort::SetScreenSize(long width, long height)
{
    m_screenWidth = std::max(width, 0L);
    m_screenHeight = std::max(height, 0L);
}

char QorHeadlessEventPort::Poll(MSG& msg)
{
    while (!m_script.empty() && m_script.front().due <= QorGetClock().GetMillis())
    {
        Entry entry = m_script.front();
        m_script.pop_front();
        if (!entry.composition)
        {
            msg = entry.msg;
            return 1;
        }
        // A composition change becomes its messages when it is delivered, as the SDL2 port's does.
        std::vector<MSG> messages;
        qor::detail::ComposeMessages(entry.msg.hwnd, entry.text.c_str(), entry.cursor, messages);
        for (auto it = messages.rbegin(); it != messages.rend(); ++it)
            m_script.push_front(Entry{entry.due, *it});
    }
    return 0;
}

char QorHeadlessEventPort::Wait(unsigned long timeoutMs)
{
    QorManualClock* clock = QorGetManualClock();
    const unsigned long now = QorGetClock().GetMillis();
    unsigned long target = timeoutMs == kForever ? kForever : now + timeoutMs;
    if (!m_script.empty())
        target = std::min(target, std::max(m_script.front().due, now));
    if (target == kForever)
        return 0;
    if (clock && target > now)
        clock->Advance(target - now);
    return 1;
}

void QorHeadlessEventPort::Inject(const MSG& msg)
{
    InjectAt(QorGetClock().GetMillis(), msg);
}

void QorHeadlessEventPort::InjectAt(unsigned long ms, const MSG& msg)
{
    // Kept in time order; messages of the same time in the order given.
    auto at = std::upper_bound(m_script.begin(), m_script.end(), ms,
                               [](unsigned long due, const Entry& entry) { return due < entry.due; });
    m_script.insert(at, Entry{ms, msg});
}

void QorHeadlessEventPort::InjectText(HWND window, const char* utf8)
{
    if (!utf8)
        return;
    for (unsigned char byte : qor::detail::Utf8ToBig5(utf8, std::strlen(utf8)))
        Inject(MSG{window, WM_CHAR, WPARAM(byte), 1, 0, {0, 0}});
}

void QorHeadlessEventPort::InjectKey(HWND window, int virtualKey)
{
    Inject(MSG{window, WM_KEYDOWN, WPARAM(virtualKey), 1, 0, {0, 0}});
    Inject(MSG{window, WM_KEYUP, WPARAM(virtualKey), LPARAM(1u | (1u << 30) | (1u << 31)), 0, {0, 0}});
}

void QorHeadlessEventPort::InjectComposition(HWND window, const char* utf8, long cursor)
{
    Entry entry{QorGetClock().GetMillis(), MSG{window, WM_NULL, 0, 0, 0, {0, 0}}};
    entry.composition = true;
    entry.text = utf8 ? utf8 : "";
    entry.cursor = cursor;
    auto at = std::upper_bound(m_script.begin(), m_script.end(), entry.due,
                               [](unsigned long due, const Entry& e) { return due < e.due; });
    m_script.insert(at, entry);
}

void QorHeadlessEventPort::InjectMouse(HWND window, UINT message, int x, int y, WPARAM keys)
{
    Inject(MSG{window, message, keys, MAKELPARAM(WORD(x), WORD(y)), 0, {0, 0}});
}

QorHeadlessVideoPort* QorGetHeadlessVideo()
{
    return QorGetPortKind() == QorPortKind::kHeadless ? dynamic_cast<QorHeadlessVideoPort*>(&QorGetVideoPort())
                                                      : nullptr;
}

QorHeadlessEventPort* QorGetHeadlessEvents()
{
    return QorGetPortKind() == QorPortKind::kHeadless ? dynamic_cast<QorHeadlessEventPort*>(&QorGetEventPort())
                                                      : nullptr;
}

QorHeadlessWindowPort* QorGetHeadlessWindow(HWND window)
{
    qor::detail::WindowRecord* record = qor::detail::FindWindowRecord(window);
    return record ? dynamic_cast<QorHeadlessWindowPort*>(record->port.get()) : nullptr;
}

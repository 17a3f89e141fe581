#include "platform/windows/com_text.h"

#include <cstdio>
#include <new>

namespace mv::com {

std::wstring widen(std::string_view utf8) {
    if (utf8.empty()) return {};
    const int n = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), nullptr, 0);
    std::wstring wide(static_cast<size_t>(n), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), wide.data(), n);
    return wide;
}

std::string narrow(const wchar_t* text, size_t length) {
    if (!text || length == 0) return {};
    const int n = WideCharToMultiByte(CP_UTF8, 0, text, static_cast<int>(length), nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<size_t>(n), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, static_cast<int>(length), utf8.data(), n, nullptr, nullptr);
    return utf8;
}

std::string utf8Of(BSTR text) { return narrow(text, SysStringLen(text)); }

Bstr::Bstr(std::string_view utf8) {
    const std::wstring wide = widen(utf8);
    // Counted, so a text with a NUL in it keeps its full length.
    m_text = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
    if (!m_text) throw std::bad_alloc();
}

Bstr& Bstr::operator=(Bstr&& other) noexcept {
    if (this != &other) {
        SysFreeString(m_text);
        m_text = other.release();
    }
    return *this;
}

BSTR* Bstr::out() {
    SysFreeString(m_text);
    m_text = nullptr;
    return &m_text;
}

BSTR Bstr::release() {
    BSTR text = m_text;
    m_text = nullptr;
    return text;
}

std::string describeResult(HRESULT hr) {
    char code[16];
    std::snprintf(code, sizeof code, "0x%08lX", static_cast<unsigned long>(hr));
    wchar_t* text = nullptr;
    const DWORD n = FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                   nullptr, static_cast<DWORD>(hr), 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    std::string message = n ? narrow(text, n) : std::string();
    LocalFree(text);
    while (!message.empty() && (message.back() == '\n' || message.back() == '\r' || message.back() == ' ' || message.back() == '.'))
        message.pop_back();
    return message.empty() ? std::string(code) : std::string(code) + " (" + message + ")";
}

}  // namespace mv::com

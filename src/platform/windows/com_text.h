#pragma once
// Text across the automation boundary: UTF-8 inside the suite, counted UTF-16
// strings (BSTR) on the interface. Bstr owns one BSTR and frees it exactly
// once; what a callee returns through an out-parameter becomes the caller's
// to free, and Bstr::out() takes that ownership.
#include <windows.h>

#include <oleauto.h>

#include <string>
#include <string_view>

namespace mv::com {

std::wstring widen(std::string_view utf8);
std::string narrow(const wchar_t* text, size_t length);
// The text of a BSTR (a null BSTR is the empty text).
std::string utf8Of(BSTR text);

class Bstr {
public:
    Bstr() = default;
    explicit Bstr(std::string_view utf8);
    ~Bstr() { SysFreeString(m_text); }
    Bstr(const Bstr&) = delete;
    Bstr& operator=(const Bstr&) = delete;
    Bstr(Bstr&& other) noexcept : m_text(other.release()) {}
    Bstr& operator=(Bstr&& other) noexcept;

    BSTR get() const { return m_text; }
    // For an [out] BSTR*: whatever was held is freed first.
    BSTR* out();
    // The BSTR in place, for passing by reference: the callee may replace
    // it, and whatever is there in the end is freed here.
    BSTR* reference() { return &m_text; }
    // Hands the BSTR over to someone who will free it.
    BSTR release();
    std::string utf8() const { return utf8Of(m_text); }

private:
    BSTR m_text = nullptr;
};

// "0x80004005 (Unspecified error)": a failed call's code, for messages.
std::string describeResult(HRESULT hr);

}  // namespace mv::com

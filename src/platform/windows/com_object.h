#pragma once
// What every COM object this project implements does alike: counts its
// references, deletes itself with the last one, and answers QueryInterface
// for the interfaces it lists.
#include <windows.h>

#include <unknwn.h>

#include <atomic>
#include <initializer_list>

namespace mv::com {

template <class Derived>
class ComObject {
protected:
    ComObject() = default;
    ~ComObject() = default;

    ULONG addReference() { return ++m_references; }
    ULONG dropReference() {
        const ULONG left = --m_references;
        if (left == 0) delete static_cast<Derived*>(this);
        return left;
    }
    // Gives out `as` when `iid` is one of `iids`.
    template <class Interface>
    HRESULT answer(REFIID iid, void** out, Interface* as, std::initializer_list<IID> iids) {
        if (!out) return E_POINTER;
        for (const IID& offered : iids)
            if (IsEqualIID(offered, iid)) {
                *out = as;
                addReference();
                return S_OK;
            }
        *out = nullptr;
        return E_NOINTERFACE;
    }

private:
    std::atomic<ULONG> m_references{1};
};

}  // namespace mv::com

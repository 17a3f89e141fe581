#pragma once
// Taking ownership of a freshly made COM object. MinGW's ComPtr::Attach adds
// a reference (Microsoft's does not), so an object handed over with Attach
// would never be released; adopt() puts the pointer in place instead.
#include <wrl/client.h>

namespace mv::com {

template <class T>
Microsoft::WRL::ComPtr<T> adopt(T* fresh) {
    Microsoft::WRL::ComPtr<T> owner;
    *owner.GetAddressOf() = fresh;
    return owner;
}

}  // namespace mv::com

#pragma once
// The host stand-in loaded straight from its file beside the tests, without
// the registry, with a simulated node attached: objects made through
// creator() are the stand-in's, driven by that node.
#include <windows.h>

#include <oaidl.h>
#include <wrl/client.h>

#include <filesystem>
#include <stdexcept>

#include "platform/running_program.h"
#include "platform/windows/com_host_link.h"
#include "platform/windows/host_automation.h"
#include "platform/windows/stand_in_node.h"

namespace mv::test {

class LoadedStandIn {
public:
    explicit LoadedStandIn(SimulatedHost& node) : m_node(node) {
        const std::filesystem::path file = runningProgramPath().parent_path() / "marrowvane-host-standin.dll";
        m_module = LoadLibraryW(file.c_str());
        if (!m_module) throw std::runtime_error("cannot load " + file.string());
        using GetClassObject = HRESULT(WINAPI*)(REFCLSID, REFIID, void**);
        const auto get = reinterpret_cast<GetClassObject>(reinterpret_cast<void*>(GetProcAddress(m_module, "DllGetClassObject")));
        if (!get || FAILED(get(host_automation::kHostClass, IID_IClassFactory,
                               reinterpret_cast<void**>(m_factory.GetAddressOf()))) ||
            FAILED(m_factory->QueryInterface(com::kStandInControlInterface,
                                             reinterpret_cast<void**>(m_control.GetAddressOf()))))
            throw std::runtime_error("the stand-in has no class object");
        m_control->Attach(&m_node);
        if (FAILED(LoadTypeLibEx(file.c_str(), REGKIND_NONE, &m_library))) throw std::runtime_error("no type library");
    }
    ~LoadedStandIn() {
        m_control->Attach(nullptr);
        m_library.Reset();
        m_control.Reset();
        m_factory.Reset();
        // The module stays loaded: objects made from it may outlive this.
    }

    com::ComHostLink::Creator creator() {
        return [factory = m_factory] {
            Microsoft::WRL::ComPtr<IUnknown> object;
            const HRESULT hr = factory->CreateInstance(nullptr, IID_IUnknown, reinterpret_cast<void**>(object.GetAddressOf()));
            if (FAILED(hr)) throw std::runtime_error("the stand-in made no object");
            return object;
        };
    }
    ITypeLib* typeLibrary() const { return m_library.Get(); }

private:
    com::SimulatedStandInNode m_node;
    HMODULE m_module = nullptr;
    Microsoft::WRL::ComPtr<IClassFactory> m_factory;
    Microsoft::WRL::ComPtr<com::IStandInControl> m_control;
    Microsoft::WRL::ComPtr<ITypeLib> m_library;
};

}  // namespace mv::test

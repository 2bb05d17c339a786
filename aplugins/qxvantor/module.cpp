// The module as its loader and the component runtime see it: its start and end, and the classes that it offers.
#include "aplugins/qxvantor/vantor_filter.h"
#include "aplugins/qxvantor/vantor_setup.h"
#include "kernel/lang.h"
#include "platform/media/class_factory.h"
#include "platform/module_export.h"

#include <objbase.h>

namespace {

const CFactoryTemplate kClasses[] = {
    {kVantorClassName, &CLSID_QxVantor, CQxVantor::CreateInstance, &kVantorSetup},
};

}   // namespace

extern "C" QX_EXPORT BOOL WINAPI DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID)
{
    if (dwReason == DLL_PROCESS_ATTACH)
        return SUCCEEDED(OpenKernelLanguage(hInstance));
    if (dwReason == DLL_PROCESS_DETACH)
        CloseKernelLanguage();
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID rclsid, REFIID riid, LPVOID* ppObject)
{
    return GetClassObject(kClasses, rclsid, riid, ppObject);
}

STDAPI DllCanUnloadNow()
{
    return CanUnloadNow();
}

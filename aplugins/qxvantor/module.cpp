// The module's entry: what the loader calls, and how a host comes to the classes in it.

#include "aplugins/qxvantor/vantor_filter.h"
#include "aplugins/qxvantor/vantor_setup.h"
#include "kernel/kernel.h"
#include "platform/media/class_factory.h"

#include <windows.h>

#include <objbase.h>

namespace {

const CFactoryTemplate kClasses[] = {
    {kVantorClassName, &CLSID_QxVantor, CQxVantor::CreateInstance, &kVantorSetup},
};

BOOL Attach(HINSTANCE hInstance)
{
    if (!QxKernel_EarlyInitialize(hInstance, 0))
        return FALSE;
    DisableThreadLibraryCalls(hInstance);   // failing costs two calls a thread
    return TRUE;
}

}   // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID pReserved)
{
    if (dwReason == DLL_PROCESS_ATTACH)
        return Attach(hInstance);
    // When the process ends, its other threads may have died with a lock held; then everything is left to the system.
    if (dwReason == DLL_PROCESS_DETACH && !pReserved)
        return QxKernel_LateTerminate(hInstance, 0);
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

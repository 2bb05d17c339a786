#include <winnt.h>

LONG InterlockedIncrement(volatile LONG* pValue)
{
    return __atomic_add_fetch(pValue, 1, __ATOMIC_SEQ_CST);
}

LONG InterlockedDecrement(volatile LONG* pValue)
{
    return __atomic_sub_fetch(pValue, 1, __ATOMIC_SEQ_CST);
}

LONG InterlockedExchange(volatile LONG* pTarget, LONG nValue)
{
    return __atomic_exchange_n(pTarget, nValue, __ATOMIC_SEQ_CST);
}

LONG InterlockedExchangeAdd(volatile LONG* pTarget, LONG nValue)
{
    return __atomic_fetch_add(pTarget, nValue, __ATOMIC_SEQ_CST);
}

LONG InterlockedCompareExchange(volatile LONG* pTarget, LONG nValue, LONG nComparand)
{
    __atomic_compare_exchange_n(pTarget, &nComparand, nValue, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
    return nComparand;
}

PVOID InterlockedExchangePointer(PVOID volatile* ppTarget, PVOID pValue)
{
    return __atomic_exchange_n(ppTarget, pValue, __ATOMIC_SEQ_CST);
}

PVOID InterlockedCompareExchangePointer(PVOID volatile* ppTarget, PVOID pValue, PVOID pComparand)
{
    __atomic_compare_exchange_n(ppTarget, &pComparand, pValue, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
    return pComparand;
}

#include "platform/native/refusal.h"
#include "platform/native/value_format.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

constexpr size_t kMaxText = 32767;   // characters, the platform's own limit for one message

// The arguments in order, fetched as far as an insert has asked.
class Inserts {
public:
    Inserts(va_list* pArguments, bool isArray)
        : list(isArray ? nullptr : pArguments), array(isArray ? reinterpret_cast<const uint64_t*>(pArguments) : nullptr)
    {
    }
    bool Given() const { return list || array; }
    uint64_t At(size_t index)
    {
        if (array)
            return array[index];
        while (values.size() <= index)
            values.push_back(va_arg(*list, uint64_t));
        return values[index];
    }

private:
    va_list* list;
    const uint64_t* array;
    std::vector<uint64_t> values;
};

bool IsDigit(WCHAR c)
{
    return c >= '0' && c <= '9';
}

// One or two digits, not beginning with 0.
size_t TakeNumber(WideView& text)
{
    size_t number = 0;
    for (int digits = 0; digits < 2 && !text.empty() && IsDigit(text.front()); ++digits, text.remove_prefix(1))
        number = number * 10 + size_t(text.front() - '0');
    return number;
}

// "!format!" behind the number, else "s". False when it is not closed.
bool TakeFormat(WideView& text, WideString& format)
{
    format = u"%s";
    if (!text.starts_with(u'!'))
        return true;
    const size_t end = text.find(u'!', 1);
    if (end == WideView::npos)
        return false;
    format = u"%" + WideString(text.substr(1, end - 1));
    text.remove_prefix(end + 1);
    return true;
}

bool PutInsert(WideView& text, Inserts& inserts, WideString& out)
{
    size_t index = TakeNumber(text) - 1;
    WideString format;
    if (!inserts.Given() || !TakeFormat(text, format))
        return false;
    out += PrintValues(
        format, [&] { return inserts.At(index++); }, kMaxText);
    return true;
}

// What follows a '%'. False ends the call; "%0" ends the text by emptying what remains.
bool PutEscape(WideView& text, Inserts& inserts, WideString& out)
{
    const WCHAR c = text.front();
    if (c >= '1' && c <= '9')
        return PutInsert(text, inserts, out);
    text.remove_prefix(1);
    switch (c) {
    case '0':
        text = {};
        return true;
    case 'n':
        out += u"\r\n";
        return true;
    case 'r':
        out += u'\r';
        return true;
    case 't':
        out += u'\t';
        return true;
    default:
        out += c;
        return true;
    }
}

// Line ends of the text itself are made whole.
void PutLineEnd(WCHAR c, WideView& text, WideString& out)
{
    if (c == '\r' && text.starts_with(u'\n'))
        text.remove_prefix(1);
    out += u"\r\n";
}

bool Compose(WideView text, Inserts inserts, bool plain, WideString& out)
{
    while (!text.empty()) {
        const WCHAR c = text.front();
        text.remove_prefix(1);
        if (c == '\r' || c == '\n')
            PutLineEnd(c, text, out);
        else if (c != '%')
            out += c;
        else if (plain)   // the escapes stay, but for the end of the text
            out += c;
        else if (text.empty() || !PutEscape(text, inserts, out))
            return false;
    }
    return true;
}

DWORD GiveAllocated(const WideString& text, LPWSTR pszOut, DWORD cchLeast)
{
    const SIZE_T cch = std::max<SIZE_T>(text.size() + 1, cchLeast);
    const HGLOBAL block = GlobalAlloc(GPTR, cch * sizeof(WCHAR));
    if (!block)
        return 0;
    std::memcpy(block, text.c_str(), (text.size() + 1) * sizeof(WCHAR));
    std::memcpy(pszOut, &block, sizeof block);   // the buffer's address is the address of a pointer
    return DWORD(text.size());
}

}   // namespace

DWORD FormatMessageW(DWORD dwFlags, LPCVOID pSource, DWORD, DWORD, LPWSTR pszOut, DWORD cch, va_list* pArguments)
{
    constexpr DWORD kKnown = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS |
                             FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ARGUMENT_ARRAY;
    const bool allocate = dwFlags & FORMAT_MESSAGE_ALLOCATE_BUFFER;
    if ((dwFlags & ~kKnown) || !(dwFlags & FORMAT_MESSAGE_FROM_STRING) || !pSource || !pszOut)
        return Refuse<DWORD>(ERROR_INVALID_PARAMETER);
    WideString text;
    const Inserts inserts(pArguments, dwFlags & FORMAT_MESSAGE_ARGUMENT_ARRAY);
    if (!Compose(static_cast<LPCWSTR>(pSource), inserts, dwFlags & FORMAT_MESSAGE_IGNORE_INSERTS, text))
        return Refuse<DWORD>(ERROR_INVALID_PARAMETER);
    if (allocate)
        return GiveAllocated(text, pszOut, cch);
    if (text.size() >= cch)
        return Refuse<DWORD>(ERROR_INSUFFICIENT_BUFFER);
    std::memcpy(pszOut, text.c_str(), (text.size() + 1) * sizeof(WCHAR));
    return DWORD(text.size());
}

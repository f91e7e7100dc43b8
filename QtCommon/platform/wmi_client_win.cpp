#include "platform/wmi_client_win.h"

#include <windows.h>

#include <oleauto.h>
#include <wbemidl.h>

namespace {

const CLSID locatorClass = { 0x4590F811, 0x1D3A, 0x11D0, { 0x89, 0x1F, 0x00, 0xAA, 0x00, 0x4B, 0x2E, 0x24 } };
const IID locatorInterface = { 0xDC12A687, 0x737F, 0x11CF, { 0x88, 0x4D, 0x00, 0xAA, 0x00, 0x4B, 0x2E, 0x24 } };

bool initialized = false;
IWbemLocator *locator = nullptr;
IWbemServices *services = nullptr;

template <typename Object>
void release(Object *&object)
{
    if (object)
        object->Release();
    object = nullptr;
}

class Text {
public:
    explicit Text(const QString &text) :
        bstr(SysAllocStringLen(reinterpret_cast<const OLECHAR *>(text.utf16()), static_cast<UINT>(text.size())))
    {
    }
    ~Text() { SysFreeString(bstr); }
    Text(const Text &) = delete;
    Text &operator=(const Text &) = delete;
    operator BSTR() const { return bstr; }

private:
    BSTR bstr;
};

QString textOf(BSTR text)
{
    return QString::fromWCharArray(text, static_cast<int>(SysStringLen(text)));
}

QString textOf(const VARIANT &value)
{
    switch (value.vt) {
    case VT_NULL:
        return "null";
    case VT_I2:
        return QString::number(value.iVal);
    case VT_I4:
        return QString::number(value.lVal);
    case VT_UINT:
        return QString::number(value.uintVal);
    case VT_BOOL:
        return QString::number(value.boolVal);
    case VT_BSTR:
        return textOf(value.bstrVal);
    default:
        return "not set";
    }
}

QString property(IWbemClassObject *object, BSTR name)
{
    VARIANT value;
    VariantInit(&value);
    if (FAILED(object->Get(name, 0, &value, nullptr, nullptr)))
        return "not set";
    const QString text = textOf(value);
    VariantClear(&value);
    return text;
}

QMap<QString, QString> properties(IWbemClassObject *object)
{
    QMap<QString, QString> result;
    SAFEARRAY *names = nullptr;
    if (FAILED(object->GetNames(nullptr, WBEM_FLAG_NONSYSTEM_ONLY, nullptr, &names)) || !names)
        return result;
    LONG first = 0;
    LONG last = -1;
    if (SUCCEEDED(SafeArrayGetLBound(names, 1, &first)) && SUCCEEDED(SafeArrayGetUBound(names, 1, &last))) {
        for (LONG index = first; index <= last; ++index) {
            BSTR name = nullptr;
            if (FAILED(SafeArrayGetElement(names, &index, &name)))
                continue;
            result[textOf(name)] = property(object, name);
            SysFreeString(name);
        }
    }
    SafeArrayDestroy(names);
    return result;
}

} // namespace

long WmiClient::connect()
{
    HRESULT result = CoInitialize(nullptr);
    // Also if the thread was initialized before, which is counted.
    initialized = SUCCEEDED(result);
    if (!initialized)
        return result;
    result = CoCreateInstance(locatorClass, nullptr, CLSCTX_INPROC_SERVER, locatorInterface,
                              reinterpret_cast<void **>(&locator));
    if (FAILED(result))
        return result;
    IWbemServices *proxy = nullptr;
    result = locator->ConnectServer(Text("ROOT\\CIMV2"), nullptr, nullptr, nullptr, 0, nullptr, nullptr, &proxy);
    if (FAILED(result))
        return result;
    result = CoSetProxyBlanket(proxy, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr, RPC_C_AUTHN_LEVEL_CALL,
                               RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
    if (FAILED(result)) {
        proxy->Release();
        return result;
    }
    // Only now, so that a half connection answers no query.
    services = proxy;
    return 0;
}

QMap<QString, QString> WmiClient::query(const QString &text)
{
    QMap<QString, QString> result;
    if (!services)
        return result;
    IEnumWbemClassObject *answers = nullptr;
    if (FAILED(services->ExecQuery(Text("WQL"), Text(text), WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY,
                                   nullptr, &answers)))
        return result;
    IWbemClassObject *object = nullptr;
    ULONG count = 0;
    if (SUCCEEDED(answers->Next(WBEM_INFINITE, 1, &object, &count)) && count == 1)
        result = properties(object);
    release(object);
    release(answers);
    return result;
}

void WmiClient::disconnect()
{
    release(services);
    release(locator);
    if (initialized)
        CoUninitialize();
    initialized = false;
}

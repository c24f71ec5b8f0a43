#include "compiled_help.h"

#include <objbase.h>
#include <stdexcept>

namespace qx::test {

namespace {

constexpr CLSID kStorageClass = {0x5D02926A, 0x212E, 0x11D0, {0x9D, 0xF9, 0x00, 0xA0, 0xC9, 0x22, 0xE6, 0xEC}};
constexpr IID kStorageInterface = {0x88CC31DE, 0x27AB, 0x11D0, {0x9D, 0xF9, 0x00, 0xA0, 0xC9, 0x22, 0xE6, 0xEC}};

// No header of ours has it; only the slots up to the one that is called.
struct CompiledStorage : IUnknown {
    virtual HRESULT WINAPI StgCreateDocfile(const WCHAR*, DWORD, DWORD, IStorage**) = 0;
    virtual HRESULT WINAPI StgCreateDocfileOnILockBytes(ILockBytes*, DWORD, DWORD, IStorage**) = 0;
    virtual HRESULT WINAPI StgIsStorageFile(const WCHAR*) = 0;
    virtual HRESULT WINAPI StgIsStorageILockBytes(ILockBytes*) = 0;
    virtual HRESULT WINAPI StgOpenStorage(const WCHAR*, IStorage*, DWORD, SNB, DWORD, IStorage**) = 0;
};

template <class T> struct Released {
    T* pointer = nullptr;
    ~Released()
    {
        if (pointer != nullptr)
            pointer->Release();
    }
    T* operator->() const { return pointer; }
};

void Check(HRESULT result, const std::string& what)
{
    if (FAILED(result))
        throw std::runtime_error(what + " failed, " + std::to_string(result));
}

std::string ReadStream(IStorage& storage, const wchar_t* name)
{
    Released<IStream> stream;
    Check(storage.OpenStream(name, nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, &stream.pointer), "opening a page");
    std::string content;
    char buffer[4096];
    ULONG bytes = 0;
    while (SUCCEEDED(stream->Read(buffer, sizeof buffer, &bytes)) && bytes > 0)
        content.append(buffer, bytes);
    return content;
}

} // namespace

std::map<std::string, std::string> ReadCompiledHelp(const std::filesystem::path& chm)
{
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    Released<CompiledStorage> reader;
    Check(CoCreateInstance(kStorageClass, nullptr, CLSCTX_INPROC_SERVER, kStorageInterface,
                           reinterpret_cast<void**>(&reader.pointer)),
          "loading the reader");
    Released<IStorage> storage;
    Check(reader->StgOpenStorage(chm.c_str(), nullptr, STGM_READ | STGM_SHARE_DENY_WRITE, nullptr, 0, &storage.pointer),
          "opening " + chm.string());
    Released<IEnumSTATSTG> entries;
    Check(storage->EnumElements(0, nullptr, 0, &entries.pointer), "listing " + chm.string());

    std::map<std::string, std::string> files;
    ULONG count = 0;
    for (STATSTG entry; entries->Next(1, &entry, &count) == S_OK; CoTaskMemFree(entry.pwcsName)) {
        const std::filesystem::path name = entry.pwcsName;
        if (entry.type == STGTY_STREAM && name.has_extension() && !name.native().starts_with(L"::"))
            files[name.filename().string()] = ReadStream(*storage.pointer, name.c_str());
    }
    return files;
}

} // namespace qx::test

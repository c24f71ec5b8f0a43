// An XML DOM in which one call fails: the calls that this program makes of documents, nodes and lists are counted, and
// the one of a chosen number answers a failure without doing anything. Calls that the DOM makes of itself do not count.
#pragma once

#include "base/no_copy.h"
#include "phonebook/file/com.h"
#include "support/redirected_import.h"

#include <array>
#include <functional>
#include <msxml2.h>
#include <utility>

namespace qx::test {

class FailingDom : NoCopy {
public:
    // Every call whose number (from 0) the function wants fails with that.
    explicit FailingDom(std::function<bool(int)> wanted, HRESULT failure = E_FAIL)
        : wanted_(std::move(wanted)), failure_(failure)
    {
        current_ = this;
        constexpr IID kDocument = {0x2933BF81, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
        constexpr CLSID kClass = {0x2933BF90, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
        ComPtr<IXMLDOMDocument> document;
        CoCreateInstance(kClass, nullptr, CLSCTX_INPROC_SERVER, kDocument,
                         reinterpret_cast<void**>(document.Receive()));
        VARIANT_BOOL loaded = VARIANT_FALSE;
        document->loadXML(MakeBstr(L"<a b='c'>d</a>").Get(), &loaded);
        ComPtr<IXMLDOMElement> element;
        ComPtr<IXMLDOMNode> text, attribute;
        ComPtr<IXMLDOMNodeList> children;
        ComPtr<IXMLDOMNamedNodeMap> attributes;
        document->get_documentElement(element.Receive());
        element->get_firstChild(text.Receive());
        element->get_childNodes(children.Receive());
        element->get_attributes(attributes.Receive());
        attributes->get_item(0, attribute.Receive());

        Patch<0, 76>(document.Get());
        Patch<1, 46>(element.Get());
        Patch<2, 43>(text.Get());
        Patch<3, 43>(attribute.Get());
        Patch<4, 11>(children.Get());
        Patch<5, 15>(attributes.Get());
    }
    ~FailingDom()
    {
        for (const Patched& patched : patched_) {
            for (int slot = kFirst; slot < patched.end; ++slot)
                WritePointer(patched.table + slot, originals_[patched.number][slot]);
        }
        current_ = nullptr;
    }

    int Calls() const noexcept { return calls_; }

private:
    using Method = HRESULT(STDMETHODCALLTYPE*)(void*, void*, void*, void*, void*, void*);
    static constexpr int kFirst = 7; // behind IUnknown and IDispatch
    static constexpr int kMost = 76;
    struct Patched {
        int number;
        void** table;
        int end;
    };

    // With as many parameters as any of them has: more do no harm.
    template <int number, int slot>
    static HRESULT STDMETHODCALLTYPE Stub(void* self, void* a, void* b, void* c, void* d, void* e)
    {
        const auto original = reinterpret_cast<Method>(originals_[number][slot]);
        if (current_->depth_ == 0 && current_->wanted_(current_->calls_++))
            return current_->failure_;
        ++current_->depth_;
        const HRESULT result = original(self, a, b, c, d, e);
        --current_->depth_;
        return result;
    }

    template <int number, int end> void Patch(void* object)
    {
        void** const table = *static_cast<void***>(object);
        [&]<int... slot>(std::integer_sequence<int, slot...>) {
            ((slot >= kFirst ? (originals_[number][slot] = table[slot],
                                WritePointer(table + slot, reinterpret_cast<void*>(&Stub<number, slot>)))
                             : void()),
             ...);
        }(std::make_integer_sequence<int, end>());
        patched_.push_back({number, table, end});
    }

    static inline FailingDom* current_ = nullptr;
    static inline void* originals_[6][kMost] = {};

    ComApartment apartment_;
    std::function<bool(int)> wanted_;
    HRESULT failure_;
    std::vector<Patched> patched_;
    int calls_ = 0;
    int depth_ = 0;
};

} // namespace qx::test

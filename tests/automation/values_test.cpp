// SPDX-License-Identifier: Apache-2.0
//
// Automation values and their owners, on Windows the system's: what is counted, copied and freed.
#include <new>
#include <string>

#include <gtest/gtest.h>

#include "foundation/automation/dispatch_object.h"

namespace foundation::automation {
namespace {

/// An object that says when it goes.
class Probe : public DispatchObject<Probe> {
  public:
    explicit Probe(bool& alive) : alive_(alive) { alive_ = true; }
    ~Probe() override { alive_ = false; }
    static std::span<const DispatchMember<Probe>> members() {
        static constexpr DispatchMember<Probe> kMembers[] = {
            {u"Sum", DISPATCH_METHOD, &Probe::sum},
            {u"Text", DISPATCH_PROPERTYGET | DISPATCH_PROPERTYPUT, &Probe::text},
            {u"Bad", DISPATCH_METHOD, &Probe::bad}};
        return kMembers;
    }

  private:
    /// Weighs arguments by their place.
    HRESULT sum(const DispatchCall& call) {
        LONG sum = 0;
        for (std::size_t index = 0; index < 3; ++index)
            sum = sum * 10 + integer_in(call.argument(index)).value_or(0);
        return call.give(sum);
    }
    HRESULT text(const DispatchCall& call) {
        if (!call.is_put()) return call.give(std::u16string_view(text_));
        text_ = text_in(call.value()).value_or(u"?");
        return S_OK;
    }
    HRESULT bad(const DispatchCall& call) {
        if (call.count() == 0) throw std::bad_alloc();
        throw 1;
    }
    bool& alive_;
    std::u16string text_ = u"first";
};

HRESULT invoke(IDispatch& object, const OLECHAR* name, WORD flags, std::vector<VARIANT> arguments,
               Variant& result) {
    auto* spelled = const_cast<OLECHAR*>(name);
    DISPID id = 0;
    const HRESULT found = object.GetIDsOfNames(IID_NULL, &spelled, 1, 0, &id);
    if (FAILED(found)) return found;
    DISPID put = DISPID_PROPERTYPUT;
    const bool is_put = flags == DISPATCH_PROPERTYPUT;
    DISPPARAMS parameters{arguments.data(), is_put ? &put : nullptr,
                          static_cast<UINT>(arguments.size()), is_put ? 1u : 0u};
    return object.Invoke(id, IID_NULL, 0, flags, &parameters, result.out(), nullptr, nullptr);
}

TEST(DispatchObject, ServesItsMembersByName) {
    bool alive = false;
    const auto object = ComPtr<IDispatch>::adopt(new Probe(alive));
    Variant result;
    const VARIANT one = Variant::integer(1).get();
    const VARIANT two = Variant::integer(2).get();
    EXPECT_EQ(invoke(*object.get(), OLESTR("sUM"), DISPATCH_METHOD, {two, one}, result), S_OK);
    EXPECT_EQ(integer_in(result.get()), 120) << "the last argument comes first";
    const Variant text = Variant::text(u"new");
    EXPECT_EQ(invoke(*object.get(), OLESTR("Text"), DISPATCH_PROPERTYPUT, {text.get()}, result),
              S_OK);
    EXPECT_EQ(invoke(*object.get(), OLESTR("Text"), DISPATCH_PROPERTYGET, {}, result), S_OK);
    EXPECT_EQ(text_in(result.get()), u"new");
    EXPECT_EQ(invoke(*object.get(), OLESTR("Text"), DISPATCH_METHOD, {}, result),
              DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(invoke(*object.get(), OLESTR("None"), DISPATCH_METHOD, {}, result),
              DISP_E_UNKNOWNNAME);
    EXPECT_EQ(invoke(*object.get(), OLESTR("Bad"), DISPATCH_METHOD, {}, result), E_OUTOFMEMORY);
    EXPECT_EQ(invoke(*object.get(), OLESTR("Bad"), DISPATCH_METHOD, {one}, result),
              DISP_E_EXCEPTION);
}

TEST(Variant, OwnsWhatItHolds) {
    bool alive = false;
    IDispatch* const object = new Probe(alive);
    Variant owner = Variant::object(object);
    object->Release();
    {
        const Variant copy = Variant::copy_of(owner.get());
        IDispatch* const released = owner.release_object();
        EXPECT_EQ(owner.type(), VT_EMPTY);
        released->Release();
        EXPECT_TRUE(alive);
    }
    EXPECT_FALSE(alive);
    const std::u16string zeros(u"a\0b", 3);
    Variant text = Variant::text(zeros);
    const Variant copy = Variant::copy_of(text.get());
    EXPECT_NE(copy.get().bstrVal, text.get().bstrVal);
    text = Variant::text(u"");
    EXPECT_EQ(text_in(copy.get()), zeros) << "text may hold units of 0";
    EXPECT_EQ(text_in(text.get()), u"");
    EXPECT_EQ(SysStringLen(nullptr), 0u);
    EXPECT_EQ(view_of(nullptr), u"");
}

TEST(Bstr, KnowsItsLengthWhateverItHolds) {
    const OLECHAR* const source = OLESTR("a\0bc");
    const struct {
        BSTR text;
        std::u16string_view expected;
    } kCases[] = {{SysAllocString(source), u"a"}, // up to the null
                  {SysAllocStringLen(source, 4), {u"a\0bc", 4}},
                  {SysAllocStringLen(source, 0), u""}};
    for (const auto& [text, expected] : kCases) {
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(view_of(text), expected);
        EXPECT_EQ(SysStringByteLen(text), 2 * expected.size()) << "bytes, not units";
        EXPECT_EQ(text[expected.size()], 0) << "the null after it is not counted";
        SysFreeString(text);
    }
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
    EXPECT_EQ(SysAllocStringLen(nullptr, 1u << 31), nullptr) << "its bytes have no count";
}

TEST(Variant, SaysWhatItHolds) {
    EXPECT_EQ(integer_in(Variant::number(3.0).get()), 3);
    EXPECT_EQ(integer_in(Variant::number(3.5).get()), std::nullopt);
    EXPECT_EQ(integer_in(Variant::number(3e9).get()), std::nullopt);
    EXPECT_EQ(integer_in(Variant::text(u"3").get()), std::nullopt);
    EXPECT_TRUE(is_true(Variant::boolean(true).get()) && is_true(Variant::integer(-1).get()));
    EXPECT_FALSE(is_true(Variant::boolean(false).get()) || is_true(Variant().get()));
    EXPECT_EQ(Variant::boolean(true).get().boolVal, -1);
}

TEST(Blocks, AreInMemoryColumnAfterColumn) {
    bool alive = false;
    {
        BlockBuilder builder(2, 3);
        for (LONG index = 0; index < 6; ++index)
            builder.elements()[index] = Variant::integer(index).release();
        IDispatch* const object = new Probe(alive);
        VariantClear(&builder.elements()[5]);
        builder.elements()[5] = Variant::object(object).release();
        object->Release();
        const Variant block = std::move(builder).take();
        const Variant copy = Variant::copy_of(block.get());
        SAFEARRAY* const array = copy.get().parray;
        for (SAFEARRAY* const each : {block.get().parray, array}) {
            LONG bounds[4];
            SafeArrayGetLBound(each, 1, &bounds[0]);
            SafeArrayGetUBound(each, 1, &bounds[1]);
            SafeArrayGetLBound(each, 2, &bounds[2]);
            SafeArrayGetUBound(each, 2, &bounds[3]);
            EXPECT_EQ(std::vector<LONG>(bounds, bounds + 4), (std::vector<LONG>{1, 2, 1, 3}));
        }
        EXPECT_EQ(SafeArrayGetDim(array), 2u);
        Variant element;
        LONG place[] = {1, 3};
        EXPECT_EQ(SafeArrayGetElement(array, place, element.out()), S_OK);
        EXPECT_EQ(integer_in(element.get()), 4);
        place[0] = 3;
        EXPECT_EQ(SafeArrayGetElement(array, place, element.out()), DISP_E_BADINDEX);
        place[0] = 0;
        EXPECT_EQ(SafeArrayPutElement(array, place, const_cast<VARIANT*>(&element.get())),
                  DISP_E_BADINDEX);
        const BlockView view(copy.get());
        ASSERT_TRUE(view);
        EXPECT_EQ(view.rows(), 2u);
        EXPECT_EQ(view.columns(), 3u);
        EXPECT_EQ(integer_in(view.elements()[4]), 4);
        EXPECT_EQ(SafeArrayDestroy(array), DISP_E_ARRAYISLOCKED);
        EXPECT_FALSE(BlockView(Variant::integer(1).get()));
    }
    EXPECT_FALSE(alive);
    EXPECT_THROW(BlockBuilder(1u << 31, 1u << 31), std::bad_alloc);
}

} // namespace
} // namespace foundation::automation

#include <ZOL/BatchOperation.h>

#include <kiocore/classref/InterfaceRef.h>

#include <gtest/gtest.h>

namespace ZOL {
namespace {

class Operation : public kiocore::classref::UnknownBase, public IBatchOperation {
public:
    void* QueryMap(const CFUUIDBytes& inInterfaceID) override
    {
        return inInterfaceID == IBatchOperation::InterfaceID() ? static_cast<IBatchOperation*>(this)
                                                               : nullptr;
    }
    int Start() override { return 0; }
    int Abort() override { return 1; }
    StationID GetStationID() const override { return "station"; }
    UTF16String GetDescription() const override { return u"Working"; }
};

TEST(BatchOperation, IsFoundThroughItsInterface)
{
    const auto object = kiocore::classref::MakeObject<Operation>();
    const kiocore::InterfaceRef<kiocore::classref::UnknownBase> unknown(object);
    const kiocore::InterfaceRef<IBatchOperation> operation(unknown);
    ASSERT_TRUE(operation);
    EXPECT_EQ(operation->GetDescription(), u"Working");
    EXPECT_TRUE(operation == object);
}

} // namespace
} // namespace ZOL

#include "quorda/rtl/component.h"
#include "rtl_test_support.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace quorda {
namespace {

using testing_support::MessageOf;

// Logs what it hears and forgets a partner that goes away, as data-aware components do.
class TProbe : public TComponent {
public:
    TProbe(TComponent* AOwner, std::string Label, std::vector<std::string>& Log)
        : TComponent(AOwner), FLabel(std::move(Label)), FLog(Log) {}
    ~TProbe() override { FLog.push_back("~" + FLabel); }

    void SetPartner(TComponent* APartner) {
        Partner = APartner;
        APartner->FreeNotification(this);
    }

    void Notification(TComponent* AComponent, TOperation Operation) override {
        TComponent::Notification(AComponent, Operation);
        FLog.push_back(FLabel + (Operation == opInsert ? ":insert:" : ":remove:") + AComponent->Name());
        if (Operation == opRemove) {
            SawDestroying = AComponent->ComponentState().Contains(csDestroying);
            if (AComponent == Partner) {
                Partner = nullptr;
            }
        }
    }

    TComponent* Partner = nullptr;
    bool SawDestroying = false; // the removed component was already destroying

private:
    std::string FLabel;
    std::vector<std::string>& FLog;
};

TEST(Component, DeletionNotifiesAndNamesOrderAndDesigningFollowTheOwner) {
    std::vector<std::string> log;
    TProbe owner(nullptr, "owner", log);
    auto* a = new TProbe(&owner, "a", log);
    a->SetName("A");
    auto* b = new TProbe(&owner, "b", log);
    b->SetName("B");
    // The owner hears the insert and forwards it to the components it already owns.
    EXPECT_EQ(log, (std::vector<std::string>{"owner:insert:", "a:insert:", "owner:insert:"}));
    log.clear();
    delete a;
    ASSERT_EQ(owner.ComponentCount(), 1);
    EXPECT_EQ(owner.Components(0), b);
    // Siblings hear the removal through the owner; the component is already gone when they do.
    EXPECT_EQ(log, (std::vector<std::string>{"~a", "b:remove:A", "owner:remove:A"}));
    EXPECT_THROW(owner.Components(1), EComponentError);
    // Partners inside one owner, and one outside, are safe when the owner goes.
    auto* form = new TProbe(nullptr, "form", log);
    auto* link = new TProbe(form, "link", log);
    auto* data = new TProbe(form, "data", log);
    data->SetName("Data");
    link->SetPartner(data);
    // A partner outside the form too.
    TProbe outside(nullptr, "outside", log);
    outside.SetPartner(link);
    link->SetName("Link");
    log.clear();
    delete form;
    EXPECT_EQ(outside.Partner, nullptr);
    EXPECT_TRUE(outside.SawDestroying);
    // data is deleted first (last owned), link hears it, then link goes and outside hears it.
    EXPECT_EQ(log, (std::vector<std::string>{"~form", "~data", "link:remove:Data", "~link",
                                             "outside:remove:Link"}));
    TComponent holder(nullptr);
    auto* first = new TComponent(&holder);
    auto* second = new TComponent(&holder);
    first->SetName("Query1");
    EXPECT_EQ(MessageOf<EComponentError>([&] { second->SetName("QUERY1"); }),
              "A component named QUERY1 already exists");
    EXPECT_EQ(MessageOf<EComponentError>([&] { second->SetName("1st"); }),
              "'1st' is not a valid component name");
    EXPECT_THROW(second->SetName("has space"), EComponentError);
    first->SetName("query1"); // a case change of its own name is fine
    second->SetName("_Query2");
    EXPECT_EQ(holder.FindComponent("QUERY1"), first);
    EXPECT_EQ(holder.FindComponent("_query2"), second);
    EXPECT_EQ(holder.FindComponent(""), nullptr);
    TComponent other(nullptr);
    auto* third = new TComponent(&other);
    EXPECT_NO_THROW(third->SetName("Query1"));
    // Moving it into an owner that already has that name is refused; it stays where it was.
    EXPECT_THROW(holder.InsertComponent(third), EComponentError);
    third->SetName("Query3");
    holder.InsertComponent(third);
    EXPECT_EQ(third->Owner(), &holder);
    EXPECT_EQ(other.ComponentCount(), 0);
    EXPECT_EQ(holder.ComponentCount(), 3);
    holder.RemoveComponent(third);
    EXPECT_EQ(third->Owner(), nullptr);
    delete third;
    // Moving a component within its owner; an index past the end moves it last.
    second->SetComponentIndex(0);
    EXPECT_EQ(holder.Components(0), second);
    second->SetComponentIndex(99);
    EXPECT_EQ(holder.Components(1), second);
    // Designing spreads to owned components, also to those that join later, unless asked not to.
    holder.SetDesigning(true);
    EXPECT_TRUE(first->IsDesigning());
    auto* late = new TComponent(&holder);
    EXPECT_TRUE(late->IsDesigning());
    holder.RemoveComponent(late);
    EXPECT_FALSE(late->IsDesigning());
    delete late;
    holder.SetDesigning(false, false);
    EXPECT_TRUE(first->IsDesigning());
    holder.DestroyComponents();
    EXPECT_EQ(holder.ComponentCount(), 0);
}

} // namespace
} // namespace quorda

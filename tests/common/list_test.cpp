#include "common/list_t.h"

#include <gmock/gmock.h>

#include <memory>
#include <vector>

namespace {

using ::testing::ElementsAre;

struct Item {
    explicit Item(int number) : value(number) { ++living; }
    ~Item() { --living; }
    int value;
    static inline int living = 0;
};

using E = Element<Item>;

/** The values from first to last, which must be those from last to first backwards. */
std::vector<int> values(const List<E>& list) {
    std::vector<int> forth, back;
    for (const E* e = list.get_first(); e != nullptr; e = e->get_next()) forth.push_back(e->item()->value);
    for (const E* e = list.get_last(); e != nullptr; e = e->get_prev())
        back.insert(back.begin(), e->item()->value);
    EXPECT_EQ(forth, back);
    EXPECT_EQ(forth.size(), list.size());
    return forth;
}

E* element(int value, bool owns = true) {
    return E::alloc(new Item(value), owns);
}

TEST(List, LinksWhereItIsTold) {
    List<E> list;
    EXPECT_THAT(values(list), ElementsAre());
    E* const two = element(2);
    list.add_head(two);
    list.add(element(4));
    list.add_head(element(1));
    E* const three = element(3);
    list.insert_after(three, two);
    list.insert_before(element(0), list.get_first());
    list.insert_after(element(5), list.get_last());
    EXPECT_THAT(values(list), ElementsAre(0, 1, 2, 3, 4, 5));
    EXPECT_EQ(three->index(), 4);

    list.remove(three);
    EXPECT_EQ(three->get_next(), nullptr);
    list.remove(three);  // not linked any more: nothing happens
    EXPECT_THAT(values(list), ElementsAre(0, 1, 2, 4, 5));
    List<E> other;
    other.add(three);
    other.take(&list);
    EXPECT_THAT(values(other), ElementsAre(3, 0, 1, 2, 4, 5));
}

TEST(List, DeletesItemsThatItsElementsOwnOrThatItIsToldTo) {
    const std::unique_ptr<Item> kept(new Item(7));
    List<E> list;
    list.add(element(1));
    list.add(E::alloc(kept.get(), false));
    list.purge_list(false);
    EXPECT_TRUE(list.is_empty());
    EXPECT_EQ(Item::living, 1);
    list.add(element(1, false));
    list.purge_list(true);
    EXPECT_EQ(Item::living, 1);
}

TEST(List, FindsByIdAndCountsIdsRoundTheSentinels) {
    E::nextid = 65535;
    List<E> list;
    list.add(element(1));
    list.add(element(2));
    EXPECT_EQ(list.find(65535), list.get_first());
    EXPECT_EQ(list.find(2), list.get_last());
    for (const uint16_t none : {uint16_t{0}, uint16_t{1}, uint16_t{3}}) EXPECT_EQ(list.find(none), nullptr);
    EXPECT_EQ(list.remove(9), nullptr);
    const std::unique_ptr<E> removed(list.remove(65535));
    EXPECT_THAT(values(list), ElementsAre(2));
}

TEST(ListDeathTest, AnElementThatIsStillLinkedStopsTheProgram) {
    List<E> list;
    list.add(element(1));
    EXPECT_EXIT(delete list.get_first(), ::testing::KilledBySignal(SIGABRT),
                "list_t:188: Element<Item>::~Element\\(\\) \\[with Item = SwitchCache\\]: Assertion `!_prev "
                "\\|\\| !_next' failed");
}

}  // namespace

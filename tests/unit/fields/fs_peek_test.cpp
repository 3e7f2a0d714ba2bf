// What a running macro sees of the input: the layer's look ahead queues the
// key lines that come next and stops at any other line, and events can be
// cut out of the queue with the others keeping their order.
#include "fs_fixture.h"
#include "fields/fs_int.h"

#include <vector>

namespace {

bool ctrl_c(const fs_event &ev) { return ev.code == 'c' && (ev.modifiers & FSM_CTRL); }

// The codes of the key presses queued, in order; the queue is left empty.
std::vector<int> presses() {
  std::vector<int> out;
  fs_event ev;
  int ch;
  while (fs_evtake(ev, ch))
    if (!(ev.released & 1)) out.push_back(ev.code);
  return out;
}

}  // namespace

class Peek : public FieldsTest {
 protected:
  void TearDown() override {
    presses();
    FieldsTest::TearDown();
  }
};

TEST_F(Peek, TakesTheKeysTypedAheadAndStopsAtOtherLines) {
  rec->script("type ab\nkey c-c\nkey enter\ndump\ntype z");
  rec->peek();
  EXPECT_EQ(presses(), (std::vector<int>{'a', 'b', 'c', 13}));
  // The dump and what follows it wait for the next read.
  rec->peek();
  EXPECT_EQ(fs_evpending(), 0);
}

TEST_F(Peek, CutTakesOnlyTheChosenEventsAndKeepsTheOrder) {
  rec->script("type x\nkey c-c\ntype y\nkey c-c\ntype c");
  rec->peek();
  EXPECT_EQ(fs_evcut(ctrl_c), 4);  // two presses and their releases
  EXPECT_EQ(presses(), (std::vector<int>{'x', 'y', 'c'}));
  EXPECT_EQ(fs_evcut(ctrl_c), 0);  // an empty queue stays empty
  EXPECT_EQ(fs_evpending(), 0);
}

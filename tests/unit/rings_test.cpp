// The event rings between the panel and the application's thread.
#include <gtest/gtest.h>

#include "records/panel_hooks.h"
#include "records/rings.h"

#include <memory>
#include <string>

namespace {

// The panel's side of direct delivery, as the application's thread reaches it.
std::string delivered;

void show_status(const char *text) { delivered += std::string("status:") + text + ";"; }
void show_last_call() { delivered += "last_call;"; }
void show_thread_and_context() { delivered += "banners;"; }
void update_all() { delivered += "refresh_all;"; }
void history_changed() { delivered += "history;"; }

// The panel registers its entries as the real one does at process attach.
const bool registered = (panel = {nullptr, show_status, show_last_call, show_thread_and_context, update_all,
                                  history_changed},
                         true);

std::unique_ptr<ring> empty_ring()
{
    auto r = std::make_unique<ring>();
    fill_ring(r.get());
    return r;
}

TEST(Rings, HoldSixtyThreeEventsDropTheNextAndWrapAroundInOrder)
{
    auto r = empty_ring();
    for (int i = 0; i < 63; ++i)
        post_event(r.get(), i % 2 ? EVENT_STEP : EVENT_HALT);
    post_event(r.get(), EVENT_CONTINUE); // full: dropped in silence
    ring_slot slot;
    for (int i = 0; i < 63; ++i) {
        ring_read(r.get(), &slot);
        ASSERT_EQ(slot.code, i % 2 ? EVENT_STEP : EVENT_HALT) << i;
    }
    EXPECT_FALSE(ring_pending(r.get()));
    ring_read(r.get(), &slot);
    EXPECT_EQ(slot.code, EVENT_NONE);

    // Round and round the ring, in order.
    for (int i = 0; i < 200; ++i) {
        post_event(r.get(), EVENT_CONTROL_DRAW_OFF + i % 2);
        ASSERT_TRUE(ring_pending(r.get()));
        ring_read(r.get(), &slot);
        ASSERT_EQ(slot.code, EVENT_CONTROL_DRAW_OFF + i % 2);
    }
    EXPECT_FALSE(ring_pending(r.get()));
}

TEST(Rings, OnlyRequestsOfThePanelAreQueued)
{
    auto r = empty_ring();
    delivered.clear();
    for (int code : std::initializer_list<int>{-1, 0, EVENT_MESSAGE_CHANGED, EVENT_CONTEXT_CHANGED, EVENT_APPLY_TRACE_SET,
                     EVENT_STATUS_TEXT, 10, 11, 18, 100})
        post_event(r.get(), code);
    EXPECT_FALSE(ring_pending(r.get()));
    EXPECT_EQ(delivered, "");

    // History changed and refresh all go straight to the panel.
    post_event(r.get(), EVENT_HISTORY_CHANGED);
    post_event(r.get(), EVENT_REFRESH_ALL);
    EXPECT_FALSE(ring_pending(r.get()));
    EXPECT_EQ(delivered, "history;refresh_all;");

    for (int code : {3, 4, 5, 6, 12, 14, 15, 16, 17})
        post_event(r.get(), code);
    ring_slot slot;
    std::string queued;
    for (ring_read(r.get(), &slot); slot.code != EVENT_NONE; ring_read(r.get(), &slot))
        queued += std::to_string(slot.code) + " ";
    EXPECT_EQ(queued, "3 4 5 6 12 14 15 16 17 ");
}

TEST(Rings, StatusAndContextChangesAreDeliveredDirectly)
{
    auto r = empty_ring();
    delivered.clear();
    post_status(r.get(), EVENT_STATUS_TEXT, "Halted");
    post_status(r.get(), EVENT_MESSAGE_CHANGED, "ignored");
    post_status(r.get(), EVENT_HALT, "ignored");
    post_context_changed(r.get(), EVENT_CONTEXT_CHANGED, 0);
    post_context_changed(r.get(), EVENT_HALT, 0);
    EXPECT_EQ(delivered, "status:Halted;last_call;banners;");
    EXPECT_FALSE(ring_pending(r.get()));
}

} // namespace

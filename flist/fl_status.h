// The status of a folder's entries, taken while the folder is still being
// read. Names arrive in batches; once a folder proves large, a few threads
// take the status of each batch as soon as it is full, so that the kernel's
// lookups run beside the reading of the folder and beside each other.
#pragma once

#include "flist/flist.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

struct fl_batch {
    std::string names;            // each ended by a NUL
    std::vector<uint32_t> starts; // where each name starts in names
    std::vector<bool> realdir;    // the entry is a real directory (a tree walks it)
    std::vector<fl_status> st;    // each name's status, zero where it failed
};

class fl_status_taker {
public:
    explicit fl_status_taker(int fd) : fd_(fd) {}
    ~fl_status_taker();
    fl_status_taker(const fl_status_taker &) = delete;
    fl_status_taker &operator=(const fl_status_taker &) = delete;

    void add(std::string_view name, bool realdir);
    // Every name's status taken: the batches in the order read.
    const std::deque<fl_batch> &finish();

private:
    bool take(bool wait); // takes one full batch's status; false when none is left
    void seal();          // the last batch is full

    int fd_;
    std::deque<fl_batch> batches_; // references stay put as it grows
    size_t sealed_ = 0;            // batches full, open to the takers
    size_t next_ = 0;              // the next batch to take
    bool done_ = false;            // no more batches will come
    bool started_ = false;         // the threads were asked for
    std::mutex m_;
    std::condition_variable cv_;
    std::vector<std::thread> takers_;
};

fl_status fl_status_from(const struct stat &sb);

// Taking the status of a folder's entries beside its reading: see fl_status.h.
#include "flist/fl_status.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>

fl_status fl_status_from(const struct stat &sb)
{
    fl_status s;
    s.mode = sb.st_mode;
    s.size = sb.st_size;
    s.atime = sb.st_atim.tv_sec;
    s.mtime = sb.st_mtim.tv_sec;
    s.ctime = sb.st_ctim.tv_sec;
    return s;
}

fl_status_taker::~fl_status_taker()
{
    {
        std::lock_guard<std::mutex> lk(m_);
        done_ = true;
    }
    cv_.notify_all();
    for (auto &t : takers_)
        t.join();
}

void fl_status_taker::add(std::string_view name, bool realdir)
{
    // A batch as large as a thread's least share: a folder smaller than that
    // never starts a thread.
    if (batches_.empty() || batches_.back().starts.size() >= std::max<size_t>(fl_share_least, 1)) {
        if (!batches_.empty())
            seal();
        std::lock_guard<std::mutex> lk(m_);
        batches_.emplace_back();
    }
    fl_batch &b = batches_.back();
    b.starts.push_back(uint32_t(b.names.size()));
    b.names.append(name.data(), name.size());
    b.names.push_back('\0');
    b.realdir.push_back(realdir);
    // Room for the status too: the takers then allocate nothing, and a
    // shortage of memory meets the reader, never a thread of its own.
    b.st.emplace_back();
}

void fl_status_taker::seal()
{
    {
        std::lock_guard<std::mutex> lk(m_);
        sealed_ = batches_.size();
    }
    cv_.notify_one();
    if (started_)
        return;
    started_ = true;
    // The reader keeps one processor; the others take status, up to three.
    size_t n = std::min<size_t>(std::max(1u, std::thread::hardware_concurrency()), 4) - 1;
    try {
        for (size_t k = 0; k < n; k++)
            takers_.emplace_back([this] {
                while (take(true)) {
                }
            });
    } catch (const std::system_error &) {
        // No thread to be had: the reader takes it all at the end.
    }
}

bool fl_status_taker::take(bool wait)
{
    fl_batch *b;
    {
        std::unique_lock<std::mutex> lk(m_);
        if (wait)
            cv_.wait(lk, [this] { return next_ < sealed_ || done_; });
        if (next_ >= sealed_)
            return false;
        b = &batches_[next_++];
    }
    for (size_t k = 0; k < b->starts.size(); k++) {
        struct stat sb;
        if (fstatat(fd_, b->names.c_str() + b->starts[k], &sb, 0) == 0)
            b->st[k] = fl_status_from(sb);
    }
    return true;
}

const std::deque<fl_batch> &fl_status_taker::finish()
{
    {
        std::lock_guard<std::mutex> lk(m_);
        sealed_ = batches_.size();
        done_ = true;
    }
    cv_.notify_all();
    while (take(false)) {
    }
    for (auto &t : takers_)
        t.join();
    takers_.clear();
    return batches_;
}

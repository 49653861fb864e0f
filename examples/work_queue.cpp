// SPDX-License-Identifier: MIT
// Work threads: pages are counted by a worker while an updater reports how far it is.
#include <ky/ky.h>

#include <atomic>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

namespace
{

struct Page : ky::kyJob
{
    explicit Page(std::string content) : text(std::move(content)) {}
    void onDelete() override { wasDiscarded = true; }

    std::string text;
    bool wasDiscarded = false;
};

class WordCounter : public ky::kyWorkThread
{
public:
    ~WordCounter() override { stop(); }

    std::atomic<int> pages{0};
    std::atomic<int> words{0};

protected:
    void processJob(ky::kyJob* job) override
    {
        for (const char c : static_cast<Page*>(job)->text)
            words += c == ' ' ? 1 : 0;
        ++words;
        ++pages;
    }
};

void report(void* counter) { std::cout << static_cast<WordCounter*>(counter)->pages << " pages so far\n"; }

} // namespace

int main()
{
    ky::initializeKySystem(ky::InitType::Full, false);
    int words = 0;
    {
        std::vector<Page> book(100, Page("to be or not to be"));
        WordCounter counter;
        counter.startThread("word counter");
        ky::kyThreadPeriodicalUpdater updater(1);
        updater.addCallback(&report, &counter);

        counter.beginWake();
        for (Page& page : book)
            counter.addJob(&page);
        counter.endWake();
        while (counter.pages < 100)
            ky::kyThread::msleep(1);
        counter.stop();
        words = counter.words;
        std::cout << words << " words, counted by " << counter.getThreadName() << '\n';
    }
    ky::terminateKySystem();
    return words == 600 ? 0 : 1;
}

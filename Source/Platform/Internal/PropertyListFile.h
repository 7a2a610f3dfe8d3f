#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Public/VLExport.h"
#include "Public/VLValue.h"

namespace vorlane {

/// One property list in the library's folder, replaced whole by each write and made durable later by the storage thread
/// (see StorageFlusher). Its owner guards it: calls on one object never overlap. Several objects may name one file.
///
/// An owner reads the file once, keeps its values in memory, and writes them after each change:
///
///     if (PropertyListFile::Step::postpone(file_, [this] { writeFile(); })) return;
///     const std::lock_guard lock(mutex_);
///     if (auto stored = file_.readAgain()) mergeStored(std::move(*stored));
///     file_.write(dictionary_);
class VORLANE_EXPORT PropertyListFile {
public:
    /// What the root of the list must be; any other root is malformed.
    enum class Root { DictionaryRoot, ArrayRoot };

    enum class Status {
        /// No such file.
        Absent,
        Contents,
        /// The bytes are no property list and there is no earlier generation. They were moved aside.
        Malformed,
        /// The system could not read the file. It stays as it is, and nothing is written over it before a later
        /// `readAgain()` has succeeded.
        Unreadable
    };

    struct Reading {
        Status status = Status::Absent;
        /// The root; null unless the status is `contents`.
        Value contents;
    };

    /// While at least one step lives on a thread, the writes of that thread are postponed to the end of the outermost
    /// one, and each file is written once. For values that change together: the end of a session, for example. Host
    /// code must not run inside a step: a call of the host's that changes a value promises that the file holds it on
    /// return.
    class VORLANE_EXPORT Step {
    public:
        Step();
        ~Step();
        Step(const Step&) = delete;
        Step& operator=(const Step&) = delete;

        /// Inside a step of this thread: has `write` called once when the step ends, with no lock held, and returns
        /// true. Otherwise returns false. The call is dropped if the file object is destroyed before.
        static bool postpone(const PropertyListFile& file, std::function<void()> write);

    private:
        friend class PropertyListFile;
        static void drop(const PropertyListFile& file);
    };

    /// An empty path: nothing is read or written.
    explicit PropertyListFile(std::string path, Root root = Root::DictionaryRoot);
    ~PropertyListFile();
    PropertyListFile(const PropertyListFile&) = delete;
    PropertyListFile& operator=(const PropertyListFile&) = delete;

    const std::string& path() const;

    /// Reads the file. Falls back to the last durable generation if the file is malformed, and restores the file from
    /// it. What is malformed is kept beside the file: ".corrupt" is the newest, then ".corrupt.1" and ".corrupt.2"; an
    /// older one is removed.
    Reading read();

    /// To be called before `write()`. If the file was unreadable, or another process owned the folder, tries again, and
    /// returns the root that the owner has to merge into its values: what the file holds is kept, and what the owner
    /// has set meanwhile wins. Otherwise `nullopt`.
    std::optional<Value> readAgain();

    /// Replaces the file and returns whether it holds `contents` now. Bytes that the file already holds are not written
    /// again. A failure leaves the file as it was and is reported once for each cause (see StorageFaults).
    bool write(const Dictionary& contents);
    bool write(const Array& contents);
    /// The same for a list that the owner has serialised.
    bool writeBytes(const Data& propertyList);

    /// Removes the file; returns whether it is gone.
    bool remove();

    /// Whether this process may write to the folder and act on what the files schedule. Another process that uses the
    /// same folder comes first; while it lives this one works in memory.
    bool isOwned();

private:
    struct Known;
    struct State;
    const std::unique_ptr<State> state_;
};

}  // namespace vorlane

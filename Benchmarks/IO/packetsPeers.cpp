// SPDX-License-Identifier: MIT

// What others need for the work of packets.cpp, and the limits below which nothing can go.

#include <fstream>

#include "IO/recordPeers.h"
#include "rec.pb.h"
#include "rec_generated.h"
#include <boost/archive/binary_iarchive.hpp>
#include <boost/archive/binary_oarchive.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>
#include <cereal/archives/binary.hpp>
#include <cereal/types/string.hpp>
#include <cereal/types/vector.hpp>
#include <google/protobuf/io/zero_copy_stream_impl.h>
#include <google/protobuf/util/delimited_message_util.h>

BOOST_CLASS_IMPLEMENTATION(bench::Rec, boost::serialization::object_serializable)
BOOST_CLASS_TRACKING(bench::Rec, boost::serialization::track_never)

namespace boost::serialization {
template<class Archive>
void serialize(Archive& archive, bench::Rec& r, unsigned) {
    peers::eachField(r, [&](auto& value) { archive& value; });
}
} // namespace boost::serialization

namespace bench {
template<class Archive>
void serialize(Archive& archive, Rec& r) {
    peers::eachField(r, [&](auto& value) { archive& value; });
}
} // namespace bench

namespace {

using namespace peers;

constexpr size_t arrayLength = 1 << 20;
constexpr size_t arrayCount = 8;
constexpr size_t arrayBytes = arrayLength * 8;

using Array = std::vector<double>;

const bench::ScratchFile scratch("packets.peers");

// --- Serialization libraries with archives -------------------------------------------------------

template<class Archive, auto... flags>
struct ArchiveWriter {
    explicit ArchiveWriter(const std::string& path) : file(path, std::ios::binary) {}
    template<class Value>
    void put(const Value& value) {
        archive << value;
    }

    std::ofstream file;
    Archive archive{file, flags...};
};

template<class Archive, auto... flags>
struct ArchiveReader {
    explicit ArchiveReader(const std::string& path) : file(path, std::ios::binary) {}
    template<class Value>
    void get(Value& value) {
        archive >> value;
    }

    std::ifstream file;
    Archive archive{file, flags...};
};

constexpr unsigned plain = boost::archive::no_header;
using BoostWriter = ArchiveWriter<boost::archive::binary_oarchive, plain>;
using BoostReader = ArchiveReader<boost::archive::binary_iarchive, plain>;
using CerealWriter = ArchiveWriter<cereal::BinaryOutputArchive>;
using CerealReader = ArchiveReader<cereal::BinaryInputArchive>;

// --- Messages by schema --------------------------------------------------------------------------

namespace delimited = google::protobuf::util;

struct ProtobufWriter : DescriptorFile {
    explicit ProtobufWriter(const std::string& path) : DescriptorFile(path, forWriting) {}
    void put(const Rec& r) {
        message.set_id(r.id);
        message.set_x(r.x);
        message.set_y(r.y);
        message.set_z(r.z);
        message.set_w(r.w);
        message.set_kind(r.kind);
        message.set_flag(r.flag);
        message.set_name(r.name);
        message.set_ref(r.ref);
        delimited::SerializeDelimitedToCodedStream(message, &coded);
    }
    void put(const Array& array) {
        static pb::Arr arrayMessage; // keeps its memory
        arrayMessage.Clear();
        arrayMessage.mutable_v()->Add(array.begin(), array.end());
        delimited::SerializeDelimitedToCodedStream(arrayMessage, &coded);
    }

    google::protobuf::io::FileOutputStream stream{fd, int(blockSize)};
    google::protobuf::io::CodedOutputStream coded{&stream};
    pb::Rec message;
};

struct ProtobufReader : DescriptorFile {
    explicit ProtobufReader(const std::string& path) : DescriptorFile(path, O_RDONLY) {}
    void get(Rec& r) {
        bool atEnd;
        message.Clear();
        bench::require(delimited::ParseDelimitedFromZeroCopyStream(&message, &stream, &atEnd),
                       "a message was read");
        r.name = message.name();
        r.id = message.id();
        r.x = message.x();
    }

    google::protobuf::io::FileInputStream stream{fd, int(blockSize)};
    pb::Rec message;
};

struct FlatWriter : StdioFile {
    explicit FlatWriter(const std::string& path) : StdioFile(path, "wb") {}
    void put(const Rec& r) {
        builder.Clear();
        const auto name = builder.CreateString(r.name);
        builder.FinishSizePrefixed(
            fb::CreateRec(builder, r.id, r.x, r.y, r.z, r.w, r.kind, r.flag, name, r.ref));
        fwrite(builder.GetBufferPointer(), 1, builder.GetSize(), file);
    }

    flatbuffers::FlatBufferBuilder builder{1024};
};

struct FlatReader : StdioFile {
    explicit FlatReader(const std::string& path) : StdioFile(path, "rb") {}
    void get(Rec& r) {
        uint32_t size;
        bench::require(fread(&size, 4, 1, file) == 1 && fread(bytes, 1, size, file) == size,
                       "a buffer was read");
        const fb::Rec* const record = flatbuffers::GetRoot<fb::Rec>(bytes);
        r.id = record->id();
        r.x = record->x();
        r.y = record->y();
        r.z = record->z();
        r.w = record->w();
        r.kind = record->kind();
        r.flag = record->flag();
        r.name.assign(record->name()->c_str(), record->name()->size());
        r.ref = record->ref();
    }

    char bytes[4096];
};

// --- The packets themselves: a head of three numbers, then the values ----------------------------

struct Head {
    explicit Head(const Rec& r) : size(int32_t(fixedSize + r.name.size() + 1)) {}
    Head() = default;
    size_t nameSize() const { return size_t(size) - fixedSize; } ///< With the terminator.

    static constexpr size_t fixedSize = 4 + 24 + 4 + 2 + 1 + 4;
    int32_t type = 2;
    int32_t reference = 0;
    int32_t size = 0;
};

/// The C library, called for each value.
struct StdioWriter : StdioFile {
    explicit StdioWriter(const std::string& path) : StdioFile(path, "wb") {}
    void put(const Rec& r) {
        (*this)(Head(r));
        eachField(r, *this);
    }
    void put(const Array& array) { fwrite(array.data(), 8, array.size(), file); }
    void operator()(const std::string& text) { fwrite(text.c_str(), 1, text.size() + 1, file); }
    void operator()(const auto& value) { fwrite(&value, sizeof value, 1, file); }
};

struct StdioReader : StdioFile {
    explicit StdioReader(const std::string& path) : StdioFile(path, "rb") {}
    void get(Rec& r) {
        (*this)(head);
        eachField(r, *this);
    }
    void get(Array& array) { bench::keep(fread(array.data(), 8, array.size(), file)); }
    void operator()(std::string& text) {
        char bytes[64];
        bench::keep(fread(bytes, 1, head.nameSize(), file));
        text.assign(bytes, head.nameSize() - 1);
    }
    void operator()(auto& value) { bench::keep(fread(&value, sizeof value, 1, file)); }

    Head head;
};

/// The limit: inline copies into one block, and write(2) when it is full.
struct BlockWriter : DescriptorFile {
    explicit BlockWriter(const std::string& path) : DescriptorFile(path, forWriting) {}
    ~BlockWriter() { flush(); }
    void put(const Rec& r) {
        append(r);
        if (used >= blockSize)
            flush();
    }
    void append(const Rec& r) {
        (*this)(Head(r));
        eachField(r, *this);
    }
    void operator()(const std::string& text) { copy(text.c_str(), text.size() + 1); }
    void operator()(const auto& value) { copy(&value, sizeof value); }
    void copy(const void* bytes, size_t n) {
        memcpy(&block[used], bytes, n);
        used += n;
    }
    void flush() {
        write(block.data(), used);
        used = 0;
    }

    size_t used = 0;
    std::vector<char> block = std::vector<char>(blockSize + 4096);
};

/// The limit: one block, filled up when less than any packet is left, and inline copies out of it.
struct BlockReader : DescriptorFile {
    explicit BlockReader(const std::string& path) : DescriptorFile(path, O_RDONLY) {}
    void get(Rec& r) {
        if (size_t(end - at) < 256)
            fill();
        Head head;
        (*this)(head);
        eachField(r, *this);
    }
    void operator()(std::string& text) {
        const size_t n = strlen(at);
        text.assign(at, n);
        at += n + 1;
    }
    void operator()(auto& value) {
        memcpy(&value, at, sizeof value);
        at += sizeof value;
    }
    void fill() {
        end = std::copy(at, end, block.data());
        at = block.data();
        end += std::max<ssize_t>(0, read(fd, end, blockSize - size_t(end - at)));
    }

    std::vector<char> block = std::vector<char>(blockSize);
    char* at = block.data();
    char* end = at;
};

// --- Arrays --------------------------------------------------------------------------------------

/// The limit: blocks straight from the array, or from a copy of it as a packet is one.
template<bool byPacket>
struct DescriptorArrayWriter : DescriptorFile {
    explicit DescriptorArrayWriter(const std::string& path) : DescriptorFile(path, forWriting) {}
    void put(const Array& array) {
        auto from = reinterpret_cast<const char*>(array.data());
        if (byPacket) {
            static std::vector<char> packet(arrayBytes);
            memcpy(packet.data(), from, arrayBytes);
            from = packet.data();
        }
        for (size_t i = 0; i < arrayBytes; i += blockSize)
            write(from + i, blockSize);
    }
};

template<bool byPacket>
struct DescriptorArrayReader : DescriptorFile {
    explicit DescriptorArrayReader(const std::string& path) : DescriptorFile(path, O_RDONLY) {}
    void get(Array& array) {
        static std::vector<char> packet(byPacket ? arrayBytes : 0);
        const auto into = byPacket ? packet.data() : reinterpret_cast<char*>(array.data());
        for (size_t i = 0; i < arrayBytes; i += blockSize)
            bench::require(read(fd, into + i, blockSize) == ssize_t(blockSize), "a block was read");
        if (byPacket)
            memcpy(array.data(), packet.data(), arrayBytes);
    }
};

const Array& array() {
    static const Array values = bench::doubles(arrayLength);
    return values;
}

template<class Writer>
void writeArrays() {
    Writer writer(scratch.path);
    for (size_t i = 0; i < arrayCount; ++i)
        writer.put(array());
}

template<class Reader>
void readArrays(Array& into) {
    Reader reader(scratch.path);
    for (size_t i = 0; i < arrayCount; ++i)
        reader.get(into);
    bench::keep(into[5]);
}

template<class Writer>
void regArrayWriting(const std::string& peer) {
    bench::reg("array_write/" + peer, [](State& s) {
        for (auto _ : s)
            writeArrays<Writer>();
        bench::bytes(s, arrayCount * arrayBytes);
    });
}

template<class Writer, class Reader>
void regArrayReading(const std::string& peer) {
    bench::reg("array_read/" + peer, [](State& s) {
        Array into(arrayLength);
        writeArrays<Writer>();
        readArrays<Reader>(into);
        bench::require(into == array(), "the arrays came back");
        for (auto _ : s)
            readArrays<Reader>(into);
        bench::bytes(s, arrayCount * arrayBytes);
    });
}

const bool registered = [] {
    const std::string& path = scratch.path;
    regWriting<BoostWriter>("boost_binary", path);
    regWriting<CerealWriter>("cereal_binary", path);
    regWriting<ProtobufWriter>("protobuf", path);
    regWriting<FlatWriter>("flatbuffers", path);
    regWriting<StdioWriter>("fwrite_per_field", path);
    regWriting<BlockWriter>("limit_inline_block", path);
    bench::reg("small_write/limit_no_file", [](State& s) {
        BlockWriter writer("/dev/null");
        for (auto _ : s)
            for (const Rec& r : bench::recs(recordCount)) {
                writer.append(r);
                if (writer.used >= blockSize) {
                    bench::keep(writer.block[0]);
                    writer.used = 0;
                }
            }
        bench::items(s, recordCount);
    });
    regReading<BoostWriter, BoostReader>("boost_binary", path);
    regReading<CerealWriter, CerealReader>("cereal_binary", path);
    regReading<ProtobufWriter, ProtobufReader>("protobuf", path);
    regReading<FlatWriter, FlatReader>("flatbuffers", path);
    regReading<BlockWriter, StdioReader>("fread_per_field", path);
    regReading<BlockWriter, BlockReader>("limit_inline_block", path);

    regArrayWriting<BoostWriter>("boost_binary");
    regArrayWriting<CerealWriter>("cereal_binary");
    regArrayWriting<ProtobufWriter>("protobuf");
    regArrayWriting<StdioWriter>("fwrite");
    regArrayWriting<DescriptorArrayWriter<false>>("limit_write_256K");
    regArrayWriting<DescriptorArrayWriter<true>>("limit_packet_copy_then_write");
    regArrayReading<BoostWriter, BoostReader>("boost_binary");
    regArrayReading<CerealWriter, CerealReader>("cereal_binary");
    regArrayReading<StdioWriter, StdioReader>("fread");
    regArrayReading<StdioWriter, DescriptorArrayReader<false>>("limit_read_256K");
    regArrayReading<StdioWriter, DescriptorArrayReader<true>>("limit_read_then_packet_copy");
    bench::reg("array_swap/limit_bswap64", [](State& s) {
        Array into(arrayLength);
        for (auto _ : s) {
            for (size_t i = 0; i < arrayLength; ++i) {
                uint64_t bits;
                memcpy(&bits, &array()[i], 8);
                bits = __builtin_bswap64(bits);
                memcpy(&into[i], &bits, 8);
            }
            bench::keep(into[5]);
        }
        bench::bytes(s, arrayBytes);
    });
    return true;
}();

} // namespace

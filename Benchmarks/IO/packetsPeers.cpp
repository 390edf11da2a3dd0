// SPDX-License-Identifier: MIT

// What others need for the work of packets.cpp, and the limits below which nothing can go.

#include <fstream>

#include "Support/Workload.h"

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
using bench::Rec;
BOOST_CLASS_IMPLEMENTATION(Rec, boost::serialization::object_serializable)
BOOST_CLASS_TRACKING(Rec, boost::serialization::track_never)
namespace boost {
namespace serialization {
template<class A>
void serialize(A& a, Rec& r, unsigned) {
    a& r.id& r.x& r.y& r.z& r.w& r.kind& r.flag& r.name& r.ref;
}
} // namespace serialization
} // namespace boost
namespace bench {
template<class A>
void serialize(A& a, Rec& r) {
    a(r.id, r.x, r.y, r.z, r.w, r.kind, r.flag, r.name, r.ref);
}
} // namespace bench
namespace {
constexpr size_t N = 200000, ARR = 1 << 20, ARRS = 8;
constexpr size_t BLK = 262144;
const bench::ScratchFile scratch("packets.peers");
const std::string& F = scratch.path;
struct Out { // the limit's sink: inline appends into one 256 KiB block, write(2) when full
    int fd;
    size_t n = 0;
    std::vector<char> b = std::vector<char>(BLK + 4096);
    explicit Out(const std::string& f) : fd(open(f.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666)) {}
    void put(const void* p, size_t k) {
        memcpy(&b[n], p, k);
        n += k;
    }
    void room() {
        if (n >= BLK)
            flush();
    }
    void flush() {
        if (write(fd, b.data(), n) < 0)
            abort();
        n = 0;
    }
    ~Out() {
        flush();
        close(fd);
    }
};
size_t body(const Rec& r) {
    return 4 + 24 + 4 + 2 + 1 + r.name.size() + 1 + 4;
}
void put(Out& o, const Rec& r) {
    int32_t h[3] = {2, 0, int32_t(body(r))};
    o.put(h, 12);
    o.put(&r.id, 4);
    o.put(&r.x, 8);
    o.put(&r.y, 8);
    o.put(&r.z, 8);
    o.put(&r.w, 4);
    o.put(&r.kind, 2);
    o.put(&r.flag, 1);
    o.put(r.name.c_str(), r.name.size() + 1);
    o.put(&r.ref, 4);
}
void writeLimit() {
    Out o(F);
    for (auto& r : bench::recs(N)) {
        put(o, r);
        o.room();
    }
}
void items(State& s) {
    s.SetItemsProcessed(int64_t(s.iterations() * N));
}
void bytesA(State& s) {
    s.SetBytesProcessed(int64_t(s.iterations() * ARR * ARRS * 8));
}
struct Mem {
    const char* p;
    template<class T>
    void get(T& t) {
        memcpy(&t, p, sizeof t);
        p += sizeof t;
    }
};
std::vector<char> slurp() {
    int fd = open(F.c_str(), O_RDONLY);
    std::vector<char> v(size_t(lseek(fd, 0, SEEK_END)));
    lseek(fd, 0, SEEK_SET);
    for (size_t n = 0; n < v.size();)
        n += size_t(read(fd, &v[n], v.size() - n));
    close(fd);
    return v;
}
const bool registered = [] {
    bench::recs(N);
    static const std::vector<double> arr = bench::doubles(ARR);
    static std::vector<double> in(ARR);
    // ---- small, write
    bench::reg("small_write/boost_binary", [](State& s) {
        for (auto _ : s) {
            std::ofstream f(F, std::ios::binary);
            boost::archive::binary_oarchive a(f, boost::archive::no_header);
            for (auto& r : bench::recs(N))
                a << r;
        }
        items(s);
    });
    bench::reg("small_write/cereal_binary", [](State& s) {
        for (auto _ : s) {
            std::ofstream f(F, std::ios::binary);
            cereal::BinaryOutputArchive a(f);
            for (auto& r : bench::recs(N))
                a(r);
        }
        items(s);
    });
    bench::reg("small_write/protobuf", [](State& s) {
        for (auto _ : s) {
            int fd = open(F.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
            {
                google::protobuf::io::FileOutputStream o(fd, BLK);
                google::protobuf::io::CodedOutputStream co(&o);
                pb::Rec m;
                for (auto& r : bench::recs(N)) {
                    m.set_id(r.id);
                    m.set_x(r.x);
                    m.set_y(r.y);
                    m.set_z(r.z);
                    m.set_w(r.w);
                    m.set_kind(r.kind);
                    m.set_flag(r.flag);
                    m.set_name(r.name);
                    m.set_ref(r.ref);
                    google::protobuf::util::SerializeDelimitedToCodedStream(m, &co);
                }
            }
            close(fd);
        }
        items(s);
    });
    bench::reg("small_write/flatbuffers", [](State& s) {
        for (auto _ : s) {
            FILE* f = fopen(F.c_str(), "wb");
            setvbuf(f, nullptr, _IOFBF, BLK);
            flatbuffers::FlatBufferBuilder b(1024);
            for (auto& r : bench::recs(N)) {
                b.Clear();
                auto n = b.CreateString(r.name);
                b.FinishSizePrefixed(
                    fb::CreateRec(b, r.id, r.x, r.y, r.z, r.w, r.kind, r.flag, n, r.ref));
                fwrite(b.GetBufferPointer(), 1, b.GetSize(), f);
            }
            fclose(f);
        }
        items(s);
    });
    bench::reg("small_write/fwrite_per_field", [](State& s) {
        for (auto _ : s) {
            FILE* f = fopen(F.c_str(), "wb");
            setvbuf(f, nullptr, _IOFBF, BLK);
            for (auto& r : bench::recs(N)) {
                int32_t h[3] = {2, 0, int32_t(body(r))};
                fwrite(h, 4, 3, f);
                fwrite(&r.id, 4, 1, f);
                fwrite(&r.x, 8, 1, f);
                fwrite(&r.y, 8, 1, f);
                fwrite(&r.z, 8, 1, f);
                fwrite(&r.w, 4, 1, f);
                fwrite(&r.kind, 2, 1, f);
                fwrite(&r.flag, 1, 1, f);
                fwrite(r.name.c_str(), 1, r.name.size() + 1, f);
                fwrite(&r.ref, 4, 1, f);
            }
            fclose(f);
        }
        items(s);
    });
    bench::reg("small_write/limit_inline_block", [](State& s) {
        for (auto _ : s)
            writeLimit();
        items(s);
    });
    bench::reg("small_write/limit_no_file", [](State& s) {
        Out o("/dev/null");
        for (auto _ : s)
            for (auto& r : bench::recs(N)) {
                put(o, r);
                if (o.n >= BLK) {
                    bench::keep(o.b[0]);
                    o.n = 0;
                }
            }
        items(s);
    });
    // ---- small, read
    bench::reg("small_read/boost_binary", [](State& s) {
        {
            std::ofstream f(F, std::ios::binary);
            boost::archive::binary_oarchive a(f, boost::archive::no_header);
            for (auto& r : bench::recs(N))
                a << r;
        }
        for (auto _ : s) {
            std::ifstream f(F, std::ios::binary);
            boost::archive::binary_iarchive a(f, boost::archive::no_header);
            Rec r;
            double t = 0;
            for (size_t i = 0; i < N; ++i) {
                a >> r;
                t += r.id + r.x;
            }
            bench::keep(t);
        }
        items(s);
    });
    bench::reg("small_read/cereal_binary", [](State& s) {
        {
            std::ofstream f(F, std::ios::binary);
            cereal::BinaryOutputArchive a(f);
            for (auto& r : bench::recs(N))
                a(r);
        }
        for (auto _ : s) {
            std::ifstream f(F, std::ios::binary);
            cereal::BinaryInputArchive a(f);
            Rec r;
            double t = 0;
            for (size_t i = 0; i < N; ++i) {
                a(r);
                t += r.id + r.x;
            }
            bench::keep(t);
        }
        items(s);
    });
    bench::reg("small_read/protobuf", [](State& s) {
        {
            int fd = open(F.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
            {
                google::protobuf::io::FileOutputStream o(fd);
                pb::Rec m;
                for (auto& r : bench::recs(N)) {
                    m.set_id(r.id);
                    m.set_x(r.x);
                    m.set_y(r.y);
                    m.set_z(r.z);
                    m.set_w(r.w);
                    m.set_kind(r.kind);
                    m.set_flag(r.flag);
                    m.set_name(r.name);
                    m.set_ref(r.ref);
                    google::protobuf::util::SerializeDelimitedToZeroCopyStream(m, &o);
                }
            }
            close(fd);
        }
        for (auto _ : s) {
            int fd = open(F.c_str(), O_RDONLY);
            google::protobuf::io::FileInputStream i(fd, BLK);
            pb::Rec m;
            double t = 0;
            bool eof;
            Rec r;
            for (size_t k = 0; k < N; ++k) {
                m.Clear();
                if (!google::protobuf::util::ParseDelimitedFromZeroCopyStream(&m, &i, &eof))
                    abort();
                r.name = m.name();
                t += m.id() + m.x();
            }
            bench::keep(t);
            bench::keep(r);
            close(fd);
        }
        items(s);
    });
    bench::reg("small_read/flatbuffers", [](State& s) {
        {
            FILE* f = fopen(F.c_str(), "wb");
            flatbuffers::FlatBufferBuilder b(1024);
            for (auto& r : bench::recs(N)) {
                b.Clear();
                auto n = b.CreateString(r.name);
                b.FinishSizePrefixed(
                    fb::CreateRec(b, r.id, r.x, r.y, r.z, r.w, r.kind, r.flag, n, r.ref));
                fwrite(b.GetBufferPointer(), 1, b.GetSize(), f);
            }
            fclose(f);
        }
        for (auto _ : s) {
            FILE* f = fopen(F.c_str(), "rb");
            setvbuf(f, nullptr, _IOFBF, BLK);
            std::vector<char> b(4096);
            Rec r;
            double t = 0;
            for (size_t i = 0; i < N; ++i) {
                uint32_t k;
                if (fread(&k, 4, 1, f) != 1 || fread(b.data(), 1, k, f) != k)
                    abort();
                auto m = flatbuffers::GetRoot<fb::Rec>(b.data());
                r.id = m->id();
                r.x = m->x();
                r.y = m->y();
                r.z = m->z();
                r.w = m->w();
                r.kind = m->kind();
                r.flag = m->flag();
                r.name.assign(m->name()->c_str(), m->name()->size());
                r.ref = m->ref();
                t += r.id + r.x;
            }
            bench::keep(t);
            bench::keep(r);
            fclose(f);
        }
        items(s);
    });
    bench::reg("small_read/fread_per_field", [](State& s) {
        writeLimit();
        for (auto _ : s) {
            FILE* f = fopen(F.c_str(), "rb");
            setvbuf(f, nullptr, _IOFBF, BLK);
            Rec r;
            double t = 0;
            for (size_t i = 0; i < N; ++i) {
                int32_t h[3];
                size_t q = fread(h, 4, 3, f);
                q += fread(&r.id, 4, 1, f);
                q += fread(&r.x, 8, 1, f);
                q += fread(&r.y, 8, 1, f);
                q += fread(&r.z, 8, 1, f);
                q += fread(&r.w, 4, 1, f);
                q += fread(&r.kind, 2, 1, f);
                q += fread(&r.flag, 1, 1, f);
                char b[64];
                size_t k = size_t(h[2]) - 39;
                q += fread(b, 1, k, f);
                r.name.assign(b, k - 1);
                q += fread(&r.ref, 4, 1, f);
                bench::keep(q);
                t += r.id + r.x;
            }
            bench::keep(t);
            fclose(f);
        }
        items(s);
    });
    bench::reg("small_read/limit_inline_block", [](State& s) {
        writeLimit();
        for (auto _ : s) {
            int fd = open(F.c_str(), O_RDONLY);
            std::vector<char> b(BLK);
            size_t have = 0;
            Rec r;
            double t = 0;
            size_t pos = 0;
            for (size_t i = 0; i < N; ++i) {
                if (have - pos < 256) {
                    memmove(&b[0], &b[pos], have - pos);
                    have -= pos;
                    pos = 0;
                    ssize_t k = read(fd, &b[have], BLK - have);
                    if (k > 0)
                        have += size_t(k);
                }
                Mem m{&b[pos]};
                int32_t h[3];
                m.get(h);
                m.get(r.id);
                m.get(r.x);
                m.get(r.y);
                m.get(r.z);
                m.get(r.w);
                m.get(r.kind);
                m.get(r.flag);
                size_t k = strlen(m.p);
                r.name.assign(m.p, k);
                m.p += k + 1;
                m.get(r.ref);
                pos += 12 + size_t(h[2]);
                t += r.id + r.x;
                bench::keep(r);
            }
            bench::keep(t);
            close(fd);
        }
        items(s);
    });
    // ---- array
    bench::reg("array_write/boost_binary", [](State& s) {
        for (auto _ : s) {
            std::ofstream f(F, std::ios::binary);
            boost::archive::binary_oarchive a(f, boost::archive::no_header);
            for (size_t k = 0; k < ARRS; ++k)
                a << arr;
        }
        bytesA(s);
    });
    bench::reg("array_write/cereal_binary", [](State& s) {
        for (auto _ : s) {
            std::ofstream f(F, std::ios::binary);
            cereal::BinaryOutputArchive a(f);
            for (size_t k = 0; k < ARRS; ++k)
                a(arr);
        }
        bytesA(s);
    });
    bench::reg("array_write/protobuf", [](State& s) {
        pb::Arr m;
        for (auto _ : s) {
            int fd = open(F.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
            {
                google::protobuf::io::FileOutputStream o(fd, BLK);
                for (size_t k = 0; k < ARRS; ++k) {
                    m.Clear();
                    m.mutable_v()->Add(arr.begin(), arr.end());
                    google::protobuf::util::SerializeDelimitedToZeroCopyStream(m, &o);
                }
            }
            close(fd);
        }
        bytesA(s);
    });
    bench::reg("array_write/fwrite", [](State& s) {
        for (auto _ : s) {
            FILE* f = fopen(F.c_str(), "wb");
            for (size_t k = 0; k < ARRS; ++k)
                fwrite(arr.data(), 8, ARR, f);
            fclose(f);
        }
        bytesA(s);
    });
    bench::reg("array_write/limit_write_256K", [](State& s) {
        for (auto _ : s) {
            int fd = open(F.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
            for (size_t k = 0; k < ARRS; ++k)
                for (size_t i = 0; i < ARR * 8; i += BLK)
                    if (write(fd, (const char*)arr.data() + i, BLK) < 0)
                        abort();
            close(fd);
        }
        bytesA(s);
    });
    bench::reg("array_write/limit_packet_copy_then_write", [](State& s) {
        std::vector<char> p(ARR * 8);
        for (auto _ : s) {
            int fd = open(F.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
            for (size_t k = 0; k < ARRS; ++k) {
                memcpy(p.data(), arr.data(), ARR * 8);
                for (size_t i = 0; i < ARR * 8; i += BLK)
                    if (write(fd, &p[i], BLK) < 0)
                        abort();
            }
            close(fd);
        }
        bytesA(s);
    });
    auto prep = [] {
        FILE* f = fopen(F.c_str(), "wb");
        for (size_t k = 0; k < ARRS; ++k) {
            uint64_t n = ARR;
            fwrite(&n, 8, 1, f);
            fwrite(arr.data(), 8, ARR, f);
        }
        fclose(f);
    };
    bench::reg("array_read/boost_binary", [](State& s) {
        {
            std::ofstream f(F, std::ios::binary);
            boost::archive::binary_oarchive a(f, boost::archive::no_header);
            for (size_t k = 0; k < ARRS; ++k)
                a << arr;
        }
        for (auto _ : s) {
            std::ifstream f(F, std::ios::binary);
            boost::archive::binary_iarchive a(f, boost::archive::no_header);
            for (size_t k = 0; k < ARRS; ++k)
                a >> in;
            bench::keep(in[5]);
        }
        bytesA(s);
    });
    bench::reg("array_read/cereal_binary", [](State& s) {
        {
            std::ofstream f(F, std::ios::binary);
            cereal::BinaryOutputArchive a(f);
            for (size_t k = 0; k < ARRS; ++k)
                a(arr);
        }
        for (auto _ : s) {
            std::ifstream f(F, std::ios::binary);
            cereal::BinaryInputArchive a(f);
            for (size_t k = 0; k < ARRS; ++k)
                a(in);
            bench::keep(in[5]);
        }
        bytesA(s);
    });
    bench::reg("array_read/fread", [prep](State& s) {
        prep();
        for (auto _ : s) {
            FILE* f = fopen(F.c_str(), "rb");
            for (size_t k = 0; k < ARRS; ++k) {
                uint64_t n;
                if (fread(&n, 8, 1, f) != 1 || fread(in.data(), 8, n, f) != n)
                    abort();
            }
            bench::keep(in[5]);
            fclose(f);
        }
        bytesA(s);
    });
    bench::reg("array_read/limit_read_256K", [prep](State& s) {
        prep();
        for (auto _ : s) {
            int fd = open(F.c_str(), O_RDONLY);
            for (size_t k = 0; k < ARRS; ++k)
                for (size_t i = 0; i < ARR * 8; i += BLK)
                    if (read(fd, (char*)in.data() + i, BLK) < 0)
                        abort();
            bench::keep(in[5]);
            close(fd);
        }
        bytesA(s);
    });
    bench::reg("array_read/limit_read_then_packet_copy", [prep](State& s) {
        prep();
        std::vector<char> p(ARR * 8);
        for (auto _ : s) {
            int fd = open(F.c_str(), O_RDONLY);
            for (size_t k = 0; k < ARRS; ++k) {
                for (size_t i = 0; i < ARR * 8; i += BLK)
                    if (read(fd, &p[i], BLK) < 0)
                        abort();
                memcpy(in.data(), p.data(), ARR * 8);
            }
            bench::keep(in[5]);
            close(fd);
        }
        bytesA(s);
    });
    bench::reg("array_swap/limit_bswap64", [](State& s) {
        for (auto _ : s) {
            for (size_t i = 0; i < ARR; ++i) {
                uint64_t x;
                memcpy(&x, &arr[i], 8);
                x = __builtin_bswap64(x);
                memcpy(&in[i], &x, 8);
            }
            bench::keep(in[5]);
        }
        s.SetBytesProcessed(int64_t(s.iterations() * ARR * 8));
    });
    return true;
}();
} // namespace

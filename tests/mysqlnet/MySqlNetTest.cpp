#include "mysqlnet/MySqlNet.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include <memory>

#include "mysqlnet/MySqlErrors.h"
#include "support/MessageOf.h"
#include "support/MySqlDialogue.h"

namespace velmora {
namespace {

using testing::Int;
using testing::MessageOf;
using testing::Packet;
using testing::TMemoryVio;
using testing::Zeros;

constexpr std::size_t kMost = MAX_PACKET_LENGTH;

// A channel whose other end is memory.
struct TRig {
  explicit TRig(const std::string& given = {}, bool compress = false, bool current = false) {
    net.vio = std::make_unique<TMemoryVio>(given, sent);
    net.compress = compress;
    net.current_protocol = current;
    net.Clear();
  }
  std::string Sent(const std::string& payload) {
    net.StartCommand();
    net.WriteBytes(payload);
    sent.clear();
    net.Flush();
    return sent;
  }
  int ErrorNumber() {
    try {
      net.ReadPacket();
    } catch (const EMySqlException& error) {
      return error.Number();
    }
    return 0;
  }

  std::string sent;
  TMySqlNet net;
};

std::string Frame(int number, const std::string& content, std::size_t plain_length = 0) {
  return Int(content.size(), 3) + Int(static_cast<std::uint64_t>(number), 1) + Int(plain_length, 3) + content;
}

std::string Deflated(const std::string& plain) {
  uLongf size = compressBound(plain.size());
  std::string packed(size, '\0');
  compress(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(plain.data()), plain.size());
  packed.resize(size);
  return packed;
}

// The lengths of all packets or frames in what was sent, with their numbers.
std::string Heads(const std::string& sent, std::size_t further = 0) {
  std::string text;
  for (std::size_t at = 0; at < sent.size();) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(sent[at + i]); };
    const std::size_t length =
        byte(0) | static_cast<std::size_t>(byte(1)) << 8 | static_cast<std::size_t>(byte(2)) << 16;
    text += (text.empty() ? "" : " ") + std::to_string(byte(3)) + ":" + std::to_string(length);
    at += NET_HEADER_SIZE + further + length;
  }
  return text;
}

TEST(MySqlNet, WritesNumbersAndTexts) {
  TRig rig;
  rig.net.WriteInt2(0x10203);
  rig.net.WriteInt3(0x1020304);
  rig.net.WriteInt4(0x1020304);
  rig.net.WriteString("ab");
  rig.net.WriteString(std::nullopt);
  rig.net.WriteFill('z', 2);
  rig.net.Flush();
  EXPECT_EQ(rig.sent, Packet(0, std::string("\3\2\4\3\2\4\3\2\1ab\0\0zz", 15)));
}

TEST(MySqlNet, NothingIsAPacketOfItsOwnAndNumbersWrap) {
  TRig rig;
  rig.net.pkt_nr = 254;
  for (int i = 0; i < 3; ++i) rig.net.Flush();
  EXPECT_EQ(rig.sent, Packet(254, "") + Packet(255, "") + Packet(0, ""));
  rig.net.StartCommand();
  rig.net.DropLast();  // there is none
  rig.sent.clear();
  rig.net.Flush();
  EXPECT_EQ(rig.sent, Packet(0, ""));
}

TEST(MySqlNet, LongPayloadsAreCut) {
  TRig old, current({}, false, true);
  EXPECT_EQ(Heads(old.Sent(Zeros(kMost - 1))), "0:16777214");
  EXPECT_EQ(Heads(old.Sent(Zeros(kMost))), "0:16777215");
  EXPECT_EQ(Heads(old.Sent(Zeros(2 * kMost + 1))), "0:16777215 1:16777215 2:1");
  EXPECT_EQ(Heads(current.Sent(Zeros(kMost))), "0:16777215 1:0");
  EXPECT_EQ(Heads(current.Sent(Zeros(kMost + 1))), "0:16777215 1:1");
  std::string payload;
  for (std::size_t i = 0; payload.size() < kMost + 100; ++i) payload += Int(i, 4);
  EXPECT_EQ(old.Sent(payload), Packet(0, payload.substr(0, kMost)) + Packet(1, payload.substr(kMost)));
}

TEST(MySqlNet, FramesAreCompressedFromFiftyBytesOn) {
  TRig rig({}, true);
  const std::string short_one = Packet(0, std::string(45, 'a')), long_one = Packet(0, std::string(46, 'a'));
  EXPECT_EQ(rig.Sent(std::string(45, 'a')), Frame(0, short_one));
  EXPECT_EQ(rig.Sent(std::string(46, 'a')), Frame(0, Deflated(long_one), 50));
  std::string noise;  // does not compress
  for (unsigned i = 0, seed = 1; i < 60; ++i) noise += static_cast<char>((seed = seed * 1103515245 + 12345) >> 16);
  EXPECT_EQ(rig.Sent(noise), Frame(0, Packet(0, noise)));
  EXPECT_EQ(rig.Sent(""), Frame(0, Packet(0, "")));
}

// The old way ends packets three bytes early, so that a frame's length fits; the current one cuts frames instead.
TEST(MySqlNet, LongFramesAreCut) {
  std::string noise;
  for (std::uint64_t i = 0, seed = 1; noise.size() < kMost + 10; ++i)
    noise += Int((seed = seed * 6364136223846793005U + 1442695040888963407U) >> 32, 4);
  TRig old({}, true), current({}, true, true);
  const std::string sent = old.Sent(noise.substr(0, kMost - 4));
  EXPECT_EQ(sent, Frame(0, Packet(0, noise.substr(0, kMost - 4))));
  const std::string payload = noise.substr(0, kMost);
  const std::string plain = Packet(0, payload);
  EXPECT_EQ(current.Sent(payload),
            Frame(0, plain.substr(0, kMost)) + Frame(1, plain.substr(kMost)) + Frame(2, Packet(1, "")));
  EXPECT_EQ(old.Sent(Zeros(kMost)).substr(3, 1), Zeros(1));
  EXPECT_EQ(Heads(old.sent, COMP_HEADER_SIZE).substr(0, 2), "0:");
  EXPECT_EQ(old.net.pkt_nr, 2);
}

TEST(MySqlNet, ReadsWhatServersWrite) {
  TRig rig(
      Packet(0, std::string("\1\2\3\4\5\6\7\x8\x9\xA\xB\xC\xD\xE\xF\x10\x11\x12", 18) + "text" + Zeros(1) + "rest"));
  rig.net.ReadPacket();
  EXPECT_EQ(rig.net.ReadByte(), 1);
  EXPECT_EQ(rig.net.ReadInt2(), 0x0302);
  EXPECT_EQ(rig.net.ReadInt3(), 0x060504U);
  EXPECT_EQ(rig.net.ReadInt4(), 0x0A090807U);
  EXPECT_EQ(rig.net.ReadInt8(), 0x1211100F0E0D0C0BU);
  EXPECT_EQ(rig.net.ReadString(), "text");
  EXPECT_EQ(rig.net.ReadString(), "rest");
  EXPECT_EQ(rig.net.ReadString(), "");
  EXPECT_FALSE(rig.net.Lost());
  EXPECT_THROW(rig.net.ReadByte(), EMySqlException);
  EXPECT_TRUE(rig.net.Lost());
}

TEST(MySqlNet, FieldLengths) {
  TRig rig(Packet(0, std::string("\xFA\xFB\xFC\1\2\xFD\1\2\3\xFE\1\2\3\4\5\6\7\x8\xFF", 19)));
  rig.net.ReadPacket();
  for (const std::uint64_t wanted : {0xFAULL, 0xFFFFFFFFULL, 0x201ULL, 0x30201ULL, 0x807060504030201ULL})
    EXPECT_EQ(rig.net.ReadFieldLength(), wanted);
  EXPECT_EQ(MessageOf([&] { rig.net.ReadFieldLength(); }), "Length code 255 is not valid");
  for (const char* cut : {"", "\xFC\1", "\xFD\1\2", "\xFE\1\2\3\4\5\6\7"}) {
    TRig short_rig(Packet(0, cut));
    short_rig.net.ReadPacket();
    EXPECT_EQ(MessageOf([&] { short_rig.net.ReadFieldLength(); }), "Malformed packet");
  }
}

TEST(MySqlNet, LongRepliesGoOnInTheNextPacket) {
  const std::string reply = Packet(0, std::string(kMost, 'x')) + Packet(1, "y");
  TRig rig(reply);
  rig.net.ReadPacket();
  EXPECT_EQ(rig.net.Packet(), std::string(kMost, 'x') + "y");

  TRig full(Packet(0, std::string(kMost, 'x')) + Packet(1, ""));
  full.net.ReadPacket();
  EXPECT_EQ(full.net.Packet().size(), kMost);

  TRig array(reply);
  std::string row;
  EXPECT_EQ(MessageOf([&] { array.net.ReadPacketInto(row); }), "Cannot retrieve huge data in FetchAll mode");
  EXPECT_TRUE(array.net.Lost());
  TRig small(Packet(0, "row"));
  small.net.ReadPacketInto(row);
  EXPECT_EQ(row, "row");
}

TEST(MySqlNet, NumbersMustFollow) {
  TRig rig(Packet(3, "abc"));
  rig.net.pkt_nr = 5;
  EXPECT_EQ(MessageOf([&] { rig.net.ReadPacket(); }), "Net packets out of order: received[3], expected[5]");
  EXPECT_EQ(rig.net.pkt_nr, 6);
  EXPECT_TRUE(rig.net.Lost());

  TRig wrapping(Packet(255, "a") + Packet(0, "b"));
  wrapping.net.pkt_nr = 255;
  wrapping.net.ReadPacket();
  wrapping.net.ReadPacket();
  EXPECT_EQ(wrapping.net.Packet(), "b");

  TRig framed(Frame(1, Packet(0, "a")), true);
  EXPECT_EQ(framed.ErrorNumber(), kPacketsOutOfOrder);
  // Inside frames, servers of today begin anew whenever they flush.
  TRig inside(Frame(0, Packet(0, "a")) + Frame(1, Packet(7, "b")), true, true);
  inside.net.ReadPacket();
  inside.net.ReadPacket();
  EXPECT_EQ(inside.net.Packet(), "b");
  TRig inside_old(Frame(0, Packet(7, "b")), true);
  EXPECT_EQ(inside_old.ErrorNumber(), kPacketsOutOfOrder);
}

TEST(MySqlNet, ServerErrors) {
  const std::string with_state = testing::ErrorPacket(0, 1045, "#28000Access denied");
  struct {
    std::string packet;
    bool current;
    int number;
    const char* text;
    bool lost;
  } const cases[] = {
      {testing::ErrorPacket(0, 1045, "Access denied"), false, 1045, "Access denied", false},
      {with_state, false, 1045, "#28000Access denied", false},
      {with_state, true, 1045, "Access denied", false},
      {testing::ErrorPacket(0, 1040, "#abc"), true, 1040, "#abc", false},
      {testing::ErrorPacket(0, 1040, ""), true, 1040, "", false},
      {Packet(0, "\xFF\1"), true, 2027, "Malformed packet", true},
  };
  for (const auto& one : cases) {
    for (const bool into : {false, true}) {
      TRig rig(one.packet, false, one.current);
      std::string row;
      try {
        into ? rig.net.ReadPacketInto(row) : rig.net.ReadPacket();
        ADD_FAILURE() << one.text;
      } catch (const EMySqlException& error) {
        EXPECT_EQ(error.Number(), one.number);
        EXPECT_STREQ(error.what(), one.text);
      }
      EXPECT_EQ(rig.net.Lost(), one.lost);
    }
  }
}

TEST(MySqlNet, CompressedRepliesCutAnywhere) {
  const std::string text(500, 'q');
  const std::string plain = Packet(0, text) + Packet(1, "second");
  for (const std::size_t cut : {std::size_t{1}, std::size_t{3}, std::size_t{4}, std::size_t{100}, plain.size() - 1}) {
    TRig rig(Frame(0, plain.substr(0, cut)) + Frame(1, Deflated(plain.substr(cut)), plain.size() - cut), true);
    rig.net.ReadPacket();
    EXPECT_EQ(rig.net.Packet(), text);
    rig.net.ReadPacket();
    EXPECT_EQ(rig.net.Packet(), "second");
    EXPECT_EQ(rig.net.compress_pkt_nr, 2);
  }
}

TEST(MySqlNet, BrokenFrames) {
  const std::string plain = Packet(0, std::string(1000, 'a'));
  const std::string packed = Deflated(plain);
  std::string damaged = packed;
  damaged[packed.size() / 2] = static_cast<char>(~damaged[packed.size() / 2]);
  const std::string bomb = Deflated(Zeros(64 << 20));
  struct {
    const char* name;
    std::string bytes;
    int number;
  } const cases[] = {
      {"longer than announced", Frame(0, packed, plain.size() - 1), kNotInflated},
      {"shorter than announced", Frame(0, packed, plain.size() + 1), kNotInflated},
      {"damaged", Frame(0, damaged, plain.size()), kNotInflated},
      {"without its end", Frame(0, packed.substr(0, packed.size() - 5), plain.size()), kNotInflated},
      {"no compressed data", Frame(0, "plain", 5), kNotInflated},
      {"a bomb", Frame(0, bomb, kMost), kNotInflated},
      {"empty for ever", Frame(0, "") + Frame(1, ""), kMalformedPacket},
      {"cut in its head", Frame(0, packed, plain.size()).substr(0, 6), kConnectionLost},
      {"cut in its content", Frame(0, packed, plain.size()).substr(0, 17), kConnectionLost},
  };
  for (const auto& one : cases) {
    TRig rig(one.bytes, true);
    EXPECT_EQ(rig.ErrorNumber(), one.number) << one.name;
    EXPECT_TRUE(rig.net.Lost()) << one.name;
  }
}

TEST(MySqlNet, ShortReadsAndWrites) {
  for (const std::string& given : {std::string(), std::string("\5\0\0", 3), Packet(0, "abc").substr(0, 6)}) {
    TRig rig(given);
    EXPECT_EQ(MessageOf([&] { rig.net.ReadPacket(); }), "Lost connection to MySQL server during query");
  }
  class TDeafVio final : public TMySqlVio {
    void SetTimeout(int) override {}
    void Connect() override {}
    void Close() override {}
    std::size_t Read(char*, std::size_t, std::size_t) override { return 0; }
    std::size_t Write(const char*, std::size_t, std::size_t count) override { return count - 1; }
    std::string Fault() const override { return "no answer within 3 seconds"; }
  };
  TMySqlNet net;
  net.vio = std::make_unique<TDeafVio>();
  net.Clear();
  EXPECT_EQ(MessageOf([&] { net.Flush(); }),
            "Lost connection to MySQL server during query: no answer within 3 seconds");
  EXPECT_TRUE(net.Lost());
}

// A server that sends packets of the greatest length for ever.
TEST(MySqlNet, EndlessPacketsEndAtTheLimit) {
  class TEndlessVio final : public TMySqlVio {
    void SetTimeout(int) override {}
    void Connect() override {}
    void Close() override {}
    std::size_t Read(char* buffer, std::size_t offset, std::size_t count) override {
      if (count == NET_HEADER_SIZE) (Int(kMost, 3) + Int(number_++, 1)).copy(buffer + offset, count);
      return count;  // the payload is whatever is there
    }
    std::size_t Write(const char*, std::size_t, std::size_t count) override { return count; }
    std::uint8_t number_ = 0;
  };
  TMySqlNet net;
  net.vio = std::make_unique<TEndlessVio>();
  EXPECT_EQ(net.longest_reply, 1U << 30);
  net.longest_reply = 3 * kMost;
  EXPECT_EQ(MessageOf([&] { net.ReadPacket(); }), "Got packet bigger than 'max_allowed_packet'");
}

TEST(MySqlNet, ErrorTexts) {
  EXPECT_EQ(MySqlErrorText(1999), "Unknown MySQL error");
  EXPECT_EQ(MySqlErrorText(2000), "Unknown MySQL error");
  EXPECT_STREQ(ClientError(2003, "host", 111).what(), "Can't connect to MySQL server on 'host' (111)");
  EXPECT_STREQ(ClientError(2005, std::string(70, 'h'), 1).what(),
               ("Unknown MySQL Server Host '" + std::string(64, 'h') + "' (1)").c_str());
  EXPECT_STREQ(ClientError(2007, 9, 10).what(), "Protocol mismatch. Server Version = 9 Client Version = 10");
  EXPECT_EQ(MySqlErrorText(2013), "Lost connection to MySQL server during query");
  EXPECT_EQ(MySqlErrorText(2014), "Commands out of sync;  You can't run this command now");
  EXPECT_EQ(MySqlErrorText(2046), "Wrong or unknown protocol");
  EXPECT_EQ(MySqlErrorText(2047), "Unknown MySQL error");
}

}  // namespace
}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
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
using testing::Wire;

constexpr std::size_t kMost = MAX_PACKET_LENGTH;
constexpr bool kCompressed = true, kCurrent = true;

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
  // The next packet; in place of it an error with its number, and whether all is lost then.
  std::string Received(bool into = false) {
    try {
      std::string packet;
      into ? net.ReadPacketInto(packet) : net.ReadPacket();
      return into ? packet : std::string(net.Packet());
    } catch (const EMySqlException& error) {
      return Format("%d %s", error.Number(), error.what()) + (net.Lost() ? ", lost" : "");
    }
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

// Bytes that do not compress.
std::string Noise(std::size_t size) {
  std::string noise;
  for (std::uint64_t seed = 1; noise.size() < size;)
    noise += Int((seed = seed * 6364136223846793005U + 1442695040888963407U) >> 32, 4);
  return noise.substr(0, size);
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
  EXPECT_EQ(rig.sent, Packet(0, Wire("0302 040302 04030201 'ab' 00 00 'zz'")));
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
  TRig old, current({}, !kCompressed, kCurrent);
  const std::string noise = Noise(2 * kMost + 1), full = Packet(0, noise.substr(0, kMost));
  EXPECT_TRUE(old.Sent(noise.substr(0, kMost - 1)) == Packet(0, noise.substr(0, kMost - 1)));
  EXPECT_TRUE(old.Sent(noise.substr(0, kMost)) == full);
  EXPECT_TRUE(old.Sent(noise) == full + Packet(1, noise.substr(kMost, kMost)) + Packet(2, noise.substr(2 * kMost)));
  EXPECT_TRUE(current.Sent(noise.substr(0, kMost)) == full + Packet(1, ""));
  EXPECT_TRUE(current.Sent(noise.substr(0, kMost + 1)) == full + Packet(1, noise.substr(kMost, 1)));
}

TEST(MySqlNet, FramesAreCompressedFromFiftyBytesOn) {
  TRig rig({}, kCompressed);
  EXPECT_EQ(rig.Sent(std::string(45, 'a')), Frame(0, Packet(0, std::string(45, 'a'))));
  EXPECT_EQ(rig.Sent(std::string(46, 'a')), Frame(0, Deflated(Packet(0, std::string(46, 'a'))), 50));
  EXPECT_EQ(rig.Sent(Noise(60)), Frame(0, Packet(0, Noise(60))));
  EXPECT_EQ(rig.Sent(""), Frame(0, Packet(0, "")));
}

// The old way ends packets three bytes early, so that a frame's length fits; the current one cuts frames instead.
TEST(MySqlNet, LongFramesAreCut) {
  TRig old({}, kCompressed), current({}, kCompressed, kCurrent);
  const std::string noise = Noise(kMost);
  EXPECT_EQ(old.Sent(noise.substr(0, kMost - 4)), Frame(0, Packet(0, noise.substr(0, kMost - 4))));
  const std::string plain = Packet(0, noise);
  EXPECT_EQ(current.Sent(noise),
            Frame(0, plain.substr(0, kMost)) + Frame(1, plain.substr(kMost)) + Frame(2, Packet(1, "")));
  EXPECT_EQ(old.Sent(std::string(kMost, 'x'))[3], 0);
  EXPECT_EQ(old.net.pkt_nr, 2);
}

TEST(MySqlNet, ReadsWhatServersWrite) {
  TRig rig(Packet(0, Wire("01 0203 040506 0708090A 0B0C0D0E0F101112 'text' 00 'rest'")));
  rig.net.ReadPacket();
  EXPECT_EQ(rig.net.ReadByte(), 1);
  EXPECT_EQ(rig.net.ReadInt2(), 0x0302);
  EXPECT_EQ(rig.net.ReadInt3(), 0x060504U);
  EXPECT_EQ(rig.net.ReadInt4(), 0x0A090807U);
  EXPECT_EQ(rig.net.ReadInt8(), 0x1211100F0E0D0C0BU);
  for (const char* text : {"text", "rest", ""}) EXPECT_EQ(rig.net.ReadString(), text);
  EXPECT_FALSE(rig.net.Lost());
  EXPECT_THROW(rig.net.ReadByte(), EMySqlException);
  EXPECT_TRUE(rig.net.Lost());
}

TEST(MySqlNet, FieldLengths) {
  TRig rig(Packet(0, Wire("FA FB FC0102 FD010203 FE0102030405060708 FF")));
  rig.net.ReadPacket();
  for (const std::uint64_t wanted : {0xFAULL, 0xFFFFFFFFULL, 0x201ULL, 0x30201ULL, 0x807060504030201ULL})
    EXPECT_EQ(rig.net.ReadFieldLength(), wanted);
  EXPECT_EQ(MessageOf([&] { rig.net.ReadFieldLength(); }), "Length code 255 is not valid");
  for (const char* cut : {"", "FC01", "FD0102", "FE01020304050607"}) {
    TRig short_rig(Packet(0, Wire(cut)));
    short_rig.net.ReadPacket();
    EXPECT_EQ(MessageOf([&] { short_rig.net.ReadFieldLength(); }), "Malformed packet");
  }
}

TEST(MySqlNet, Receives) {
  const std::string full = Packet(0, std::string(kMost, 'x'));
  const struct {
    std::string packets;
    bool current, into;
    std::string received;
  } cases[] = {
      {full + Packet(1, "y"), false, false, std::string(kMost, 'x') + "y"},
      {full + Packet(1, ""), false, false, std::string(kMost, 'x')},
      {full + Packet(1, "y"), false, true, "0 Cannot retrieve huge data in FetchAll mode, lost"},
      {Packet(0, "row"), false, true, "row"},
      {Packet(3, "abc"), false, false, "1156 Net packets out of order: received[3], expected[0], lost"},
      {Packet(0, Wire("FF 1504 'Denied'")), false, false, "1045 Denied"},
      {Packet(0, Wire("FF 1504 '#28000Denied'")), false, false, "1045 #28000Denied"},
      {Packet(0, Wire("FF 1504 '#28000Denied'")), true, false, "1045 Denied"},
      {Packet(0, Wire("FF 1504 '#28000Denied'")), true, true, "1045 Denied"},
      {Packet(0, Wire("FF 1004 '#abc'")), true, false, "1040 #abc"},
      {Packet(0, Wire("FF 1004")), true, false, "1040 Error 1040, of which the server says no more"},
      {Packet(0, Wire("FF 01")), true, false, "2027 Malformed packet, lost"},
      {Packet(0, Wire("FF 01")), true, true, "2027 Malformed packet, lost"},
      {"", false, false, "2013 Lost connection to MySQL server during query, lost"},
      {Wire("050000"), false, false, "2013 Lost connection to MySQL server during query, lost"},
      {Wire("03000000 'ab'"), false, false, "2013 Lost connection to MySQL server during query, lost"},
  };
  for (const auto& one : cases)
    EXPECT_TRUE(TRig(one.packets, !kCompressed, one.current).Received(one.into) == one.received)
        << one.received.substr(0, 100);
}

TEST(MySqlNet, NumbersMustFollow) {
  TRig wrapping(Packet(255, "a") + Packet(0, "b"));
  wrapping.net.pkt_nr = 255;
  EXPECT_EQ(wrapping.Received(), "a");
  EXPECT_EQ(wrapping.Received(), "b");
  EXPECT_EQ(wrapping.net.pkt_nr, 1);

  EXPECT_THAT(TRig(Frame(1, Packet(0, "a")), kCompressed).Received(), ::testing::StartsWith("1156 "));
  // Inside frames, servers of today begin anew whenever they flush.
  TRig inside(Frame(0, Packet(0, "a")) + Frame(1, Packet(7, "b")), kCompressed, kCurrent);
  EXPECT_EQ(inside.Received(), "a");
  EXPECT_EQ(inside.Received(), "b");
  EXPECT_THAT(TRig(Frame(0, Packet(7, "b")), kCompressed).Received(), ::testing::StartsWith("1156 "));
}

TEST(MySqlNet, CompressedRepliesCutAnywhere) {
  const std::string text(500, 'q');
  const std::string plain = Packet(0, text) + Packet(1, "second");
  for (const std::size_t cut : {std::size_t{1}, std::size_t{3}, std::size_t{4}, std::size_t{100}, plain.size() - 1}) {
    TRig rig(Frame(0, plain.substr(0, cut)) + Frame(1, Deflated(plain.substr(cut)), plain.size() - cut), kCompressed);
    EXPECT_EQ(rig.Received(), text);
    EXPECT_EQ(rig.Received(), "second");
    EXPECT_EQ(rig.net.compress_pkt_nr, 2);
  }
}

TEST(MySqlNet, BrokenFrames) {
  const std::string plain = Packet(0, std::string(1000, 'a'));
  const std::string packed = Deflated(plain);
  std::string damaged = packed;
  damaged[packed.size() / 2] = static_cast<char>(~damaged[packed.size() / 2]);
  const struct {
    const char* name;
    std::string bytes;
    int number;
  } cases[] = {
      {"longer than announced", Frame(0, packed, plain.size() - 1), kNotInflated},
      {"shorter than announced", Frame(0, packed, plain.size() + 1), kNotInflated},
      {"damaged", Frame(0, damaged, plain.size()), kNotInflated},
      {"without its end", Frame(0, packed.substr(0, packed.size() - 5), plain.size()), kNotInflated},
      {"no compressed data", Frame(0, "plain", 5), kNotInflated},
      {"a bomb", Frame(0, Deflated(std::string(64 << 20, '\0')), kMost), kNotInflated},
      {"empty for ever", Frame(0, "") + Frame(1, ""), kMalformedPacket},
      {"cut in its head", Frame(0, packed, plain.size()).substr(0, 6), kConnectionLost},
      {"cut in its content", Frame(0, packed, plain.size()).substr(0, 17), kConnectionLost},
  };
  for (const auto& one : cases)
    EXPECT_EQ(TRig(one.bytes, kCompressed).Received(),
              Format("%d %s, lost", one.number, std::string(MySqlErrorText(one.number))))
        << one.name;
}

TEST(MySqlNet, APeerThatTakesNothingIsNamed) {
  class TDeafVio final : public TMemoryVio {
   public:
    using TMemoryVio::TMemoryVio;
    std::size_t Write(const char*, std::size_t, std::size_t count) override { return count - 1; }
    std::string Fault() const override { return "no answer within 3 seconds"; }
  };
  TRig rig;
  rig.net.vio = std::make_unique<TDeafVio>("", rig.sent);
  EXPECT_EQ(MessageOf([&] { rig.net.Flush(); }),
            "Lost connection to MySQL server during query: no answer within 3 seconds");
  EXPECT_TRUE(rig.net.Lost());
}

// A server that sends packets of the greatest length for ever.
TEST(MySqlNet, EndlessPacketsEndAtTheLimit) {
  class TEndlessVio final : public TMemoryVio {
   public:
    using TMemoryVio::TMemoryVio;
    std::size_t Read(char* buffer, std::size_t offset, std::size_t count) override {
      if (count == NET_HEADER_SIZE) (Int(kMost, 3) + Int(number_++, 1)).copy(buffer + offset, count);
      return count;  // the payload is whatever is there
    }

   private:
    std::uint8_t number_ = 0;
  };
  TRig rig;
  rig.net.vio = std::make_unique<TEndlessVio>("", rig.sent);
  EXPECT_EQ(rig.net.longest_reply, 1U << 30);
  rig.net.longest_reply = 3 * kMost;
  EXPECT_EQ(rig.Received(), "2020 Got packet bigger than 'max_allowed_packet', lost");
}

TEST(MySqlNet, ErrorTexts) {
  for (const int number : {1999, 2000, 2047}) EXPECT_EQ(MySqlErrorText(number), "Unknown MySQL error");
  EXPECT_EQ(MySqlErrorText(2046), "Wrong or unknown protocol");
  EXPECT_STREQ(ClientError(2003, "host", 111).what(), "Can't connect to MySQL server on 'host' (111)");
  EXPECT_STREQ(ClientError(2005, std::string(70, 'h'), 1).what(),
               ("Unknown MySQL Server Host '" + std::string(64, 'h') + "' (1)").c_str());
}

}  // namespace
}  // namespace velmora

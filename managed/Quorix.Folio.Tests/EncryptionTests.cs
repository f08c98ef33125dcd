using System.Buffers.Binary;
using System.Security.Cryptography;
using System.Text;
using Quorix.Folio.Loading;

namespace Quorix.Folio.Tests;

/// <summary>Password-protected documents: the fixture is encrypted here and checked by an
/// independent decryptor (msoffcrypto-tool) before the engine is asked to open it.</summary>
public class EncryptionTests
{
    private const string Tool = "/usr/bin/msoffcrypto-tool";

    [Fact]
    public void OpensWithTheRightPasswordAndRefusesOthers()
    {
        var doc = new Document();
        new DocumentBuilder(doc).Writeln("Top secret paragraph.");
        var plain = TestSupport.ToBytes(doc);
        var encrypted = Encrypt(plain, "pässwörd", spinCount: 1000);
        var dir = TestSupport.TempDir();
        try
        {
            var enc = Path.Combine(dir, "enc.docx");
            File.WriteAllBytes(enc, encrypted);
            var (code, _, err) = TestSupport.Run(Tool, $"-p pässwörd \"{enc}\" \"{Path.Combine(dir, "dec.docx")}\"");
            Assert.True(code == 0, "the fixture must be valid for an independent decryptor: " + err);
            Assert.Equal(plain, File.ReadAllBytes(Path.Combine(dir, "dec.docx")));

            var opened = new Document(enc, new LoadOptions("pässwörd"));
            Assert.Equal("Top secret paragraph.\r\f", opened.GetText());
            Assert.True(FileFormatUtil.DetectFileFormat(enc).IsEncrypted);
            var wrong = Assert.Throws<IncorrectPasswordException>(() => new Document(enc, new LoadOptions("password")));
            Assert.Equal("The password is incorrect.", wrong.Message);
            Assert.Throws<IncorrectPasswordException>(() => new Document(enc));

            // A package larger than the small-stream cutoff takes the container's other path.
            var big = new Document();
            var b = new DocumentBuilder(big);
            var rng = new Random(5);
            for (int i = 0; i < 400; i++) b.Writeln($"Line {i}: {rng.NextInt64():x16}{rng.NextInt64():x16}");
            var bigBytes = Encrypt(TestSupport.ToBytes(big), "x", spinCount: 100);
            Assert.True(bigBytes.Length > 8192);
            Assert.Equal(big.GetText(), new Document(new MemoryStream(bigBytes), new LoadOptions("x")).GetText());
        }
        finally { Directory.Delete(dir, true); }
    }

    [Fact]
    public void DamagedContainersAreCorruptedNotCrashes()
    {
        var encrypted = Encrypt(TestSupport.ToBytes(new Document()), "pw", spinCount: 10);
        var rng = new Random(99);
        var allowed = new[] { typeof(FileCorruptedException), typeof(IncorrectPasswordException), typeof(UnsupportedEncryptionException), typeof(UnsupportedFileFormatException) };
        for (int i = 0; i < 120; i++)
        {
            var bytes = (byte[])encrypted.Clone();
            for (int k = 0; k < 1 + rng.Next(6); k++) bytes[rng.Next(i % 2 == 0 ? 2048 : bytes.Length)] = (byte)rng.Next(256);
            var e = Record.Exception(() => new Document(new MemoryStream(bytes), new LoadOptions("pw")));
            if (e != null) Assert.True(allowed.Contains(e.GetType()), $"case {i}: {e.GetType().Name}: {e.Message}");
        }
        var cut = encrypted[..1500];
        Assert.IsType<FileCorruptedException>(Record.Exception(() => new Document(new MemoryStream(cut), new LoadOptions("pw"))));
    }

    // --- fixture: agile encryption in a minimal compound file ---

    private static byte[] Encrypt(byte[] package, string password, int spinCount)
    {
        var keySalt = RandomNumberGenerator.GetBytes(16);
        var pwSalt = RandomNumberGenerator.GetBytes(16);
        var secret = RandomNumberGenerator.GetBytes(32);
        byte[] H(params byte[][] parts) => SHA512.HashData(parts.SelectMany(p => p).ToArray());
        var h = H(pwSalt, Encoding.Unicode.GetBytes(password));
        for (int i = 0; i < spinCount; i++) h = H(BitConverter.GetBytes(i), h);
        byte[] Key(byte[] block) => H(h, block)[..32];
        byte[] Enc(byte[] key, byte[] iv, byte[] data)
        {
            using var aes = Aes.Create();
            aes.Key = key;
            var padded = new byte[(data.Length + 15) / 16 * 16];
            data.CopyTo(padded, 0);
            return aes.EncryptCbc(padded, iv, PaddingMode.None);
        }
        var verifier = RandomNumberGenerator.GetBytes(16);
        var encInput = Enc(Key(new byte[] { 0xFE, 0xA7, 0xD2, 0x76, 0x3B, 0x4B, 0x9E, 0x79 }), pwSalt, verifier);
        var encValue = Enc(Key(new byte[] { 0xD7, 0xAA, 0x0F, 0x6D, 0x30, 0x61, 0x34, 0x4E }), pwSalt, SHA512.HashData(verifier));
        var encKey = Enc(Key(new byte[] { 0x14, 0x6E, 0x0B, 0xE7, 0xAB, 0xAC, 0xD0, 0xD6 }), pwSalt, secret);

        var pkg = new MemoryStream();
        pkg.Write(BitConverter.GetBytes((long)package.Length));
        for (int seg = 0, off = 0; off < package.Length; seg++, off += 4096)
        {
            var iv = SHA512.HashData(keySalt.Concat(BitConverter.GetBytes(seg)).ToArray())[..16];
            pkg.Write(Enc(secret, iv, package[off..Math.Min(package.Length, off + 4096)]));
        }
        var integrityKey = Enc(secret, SHA512.HashData(keySalt.Concat(new byte[] { 0x5f, 0xb2, 0xad, 0x01, 0x0c, 0xb9, 0xe1, 0xf6 }).ToArray())[..16], RandomNumberGenerator.GetBytes(64));
        var xml = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\r\n" +
            "<encryption xmlns=\"http://schemas.microsoft.com/office/2006/encryption\" xmlns:p=\"http://schemas.microsoft.com/office/2006/keyEncryptor/password\">" +
            $"<keyData saltSize=\"16\" blockSize=\"16\" keyBits=\"256\" hashSize=\"64\" cipherAlgorithm=\"AES\" cipherChaining=\"ChainingModeCBC\" hashAlgorithm=\"SHA512\" saltValue=\"{Convert.ToBase64String(keySalt)}\"/>" +
            $"<dataIntegrity encryptedHmacKey=\"{Convert.ToBase64String(integrityKey)}\" encryptedHmacValue=\"{Convert.ToBase64String(new byte[64])}\"/>" +
            "<keyEncryptors><keyEncryptor uri=\"http://schemas.microsoft.com/office/2006/keyEncryptor/password\">" +
            $"<p:encryptedKey spinCount=\"{spinCount}\" saltSize=\"16\" blockSize=\"16\" keyBits=\"256\" hashSize=\"64\" cipherAlgorithm=\"AES\" cipherChaining=\"ChainingModeCBC\" hashAlgorithm=\"SHA512\" " +
            $"saltValue=\"{Convert.ToBase64String(pwSalt)}\" encryptedVerifierHashInput=\"{Convert.ToBase64String(encInput)}\" " +
            $"encryptedVerifierHashValue=\"{Convert.ToBase64String(encValue)}\" encryptedKeyValue=\"{Convert.ToBase64String(encKey)}\"/>" +
            "</keyEncryptor></keyEncryptors></encryption>";
        var info = new MemoryStream();
        info.Write(new byte[] { 4, 0, 4, 0, 0x40, 0, 0, 0 });
        info.Write(Encoding.UTF8.GetBytes(xml));
        return Container(("EncryptionInfo", info.ToArray()), ("EncryptedPackage", pkg.ToArray()));
    }

    /// <summary>A version-3 compound file; streams under 4096 bytes go to the small-stream area, as writers put them.</summary>
    private static byte[] Container(params (string Name, byte[] Data)[] streams)
    {
        const int S = 512;
        int Sectors(long len) => (int)((len + S - 1) / S);
        var small = streams.Select(x => x.Data.Length < 4096).ToArray();
        var mini = new MemoryStream();
        var miniFat = new List<uint>();
        var miniStarts = new int[streams.Length];
        for (int k = 0; k < streams.Length; k++)
        {
            if (!small[k]) continue;
            int first = (int)(mini.Length / 64), n = (streams[k].Data.Length + 63) / 64;
            miniStarts[k] = first;
            for (int i = 0; i < n; i++) miniFat.Add(i == n - 1 ? 0xFFFFFFFE : (uint)(first + i + 1));
            mini.Write(streams[k].Data);
            while (mini.Length % 64 != 0) mini.WriteByte(0);
        }
        int miniFatSectors = Sectors(miniFat.Count * 4L), miniSectors = Sectors(mini.Length);
        int bigSectors = streams.Where((x, k) => !small[k]).Sum(x => Sectors(x.Data.Length));
        int fatSectors = 1;
        while (fatSectors + 1 + miniFatSectors + miniSectors + bigSectors > fatSectors * (S / 4)) fatSectors++;
        var fat = Enumerable.Repeat(0xFFFFFFFFu, fatSectors * (S / 4)).ToArray();
        int next = 0;
        int Chain(int count, uint terminal = 0xFFFFFFFE)
        {
            int start = next;
            for (int i = 0; i < count; i++) fat[next + i] = i == count - 1 ? terminal : (uint)(next + i + 1);
            next += count;
            return start;
        }
        for (int i = 0; i < fatSectors; i++) fat[next++] = 0xFFFFFFFD;
        int dirStart = Chain(1);
        int miniFatStart = miniFatSectors > 0 ? Chain(miniFatSectors) : -1;
        int miniStart = miniSectors > 0 ? Chain(miniSectors) : -1;
        var starts = new int[streams.Length];
        for (int k = 0; k < streams.Length; k++) starts[k] = small[k] ? miniStarts[k] : Chain(Sectors(streams[k].Data.Length));

        var file = new byte[S * (1 + next)];
        var hdr = file.AsSpan(0, S);
        new byte[] { 0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1 }.CopyTo(hdr);
        BinaryPrimitives.WriteUInt16LittleEndian(hdr[0x18..], 0x3E);
        BinaryPrimitives.WriteUInt16LittleEndian(hdr[0x1A..], 3);
        BinaryPrimitives.WriteUInt16LittleEndian(hdr[0x1C..], 0xFFFE);
        BinaryPrimitives.WriteUInt16LittleEndian(hdr[0x1E..], 9);
        BinaryPrimitives.WriteUInt16LittleEndian(hdr[0x20..], 6);
        BinaryPrimitives.WriteUInt32LittleEndian(hdr[0x2C..], (uint)fatSectors);
        BinaryPrimitives.WriteUInt32LittleEndian(hdr[0x30..], (uint)dirStart);
        BinaryPrimitives.WriteUInt32LittleEndian(hdr[0x38..], 4096);
        BinaryPrimitives.WriteUInt32LittleEndian(hdr[0x3C..], miniFatStart < 0 ? 0xFFFFFFFE : (uint)miniFatStart);
        BinaryPrimitives.WriteUInt32LittleEndian(hdr[0x40..], (uint)miniFatSectors);
        BinaryPrimitives.WriteUInt32LittleEndian(hdr[0x44..], 0xFFFFFFFE);
        for (int i = 0; i < 109; i++) BinaryPrimitives.WriteUInt32LittleEndian(hdr[(0x4C + i * 4)..], i < fatSectors ? (uint)i : 0xFFFFFFFF);
        for (int i = 0; i < fat.Length; i++) BinaryPrimitives.WriteUInt32LittleEndian(file.AsSpan(S * (1 + i / (S / 4)) + (i % (S / 4)) * 4), fat[i]);
        if (miniFatStart >= 0)
        {
            var mf = Enumerable.Repeat(0xFFFFFFFFu, miniFatSectors * (S / 4)).ToArray();
            miniFat.CopyTo(mf);
            for (int i = 0; i < mf.Length; i++) BinaryPrimitives.WriteUInt32LittleEndian(file.AsSpan(S * (1 + miniFatStart) + i * 4), mf[i]);
            mini.ToArray().CopyTo(file, S * (1 + miniStart));
        }
        int dirOffset = S * (1 + dirStart);
        void Entry(int index, string name, byte type, uint left, uint right, uint child, uint start, long size)
        {
            var e = file.AsSpan(dirOffset + index * 128, 128);
            Encoding.Unicode.GetBytes(name).CopyTo(e);
            BinaryPrimitives.WriteUInt16LittleEndian(e[0x40..], (ushort)((name.Length + 1) * 2));
            e[0x42] = type;
            e[0x43] = 1;
            BinaryPrimitives.WriteUInt32LittleEndian(e[0x44..], left);
            BinaryPrimitives.WriteUInt32LittleEndian(e[0x48..], right);
            BinaryPrimitives.WriteUInt32LittleEndian(e[0x4C..], child);
            BinaryPrimitives.WriteUInt32LittleEndian(e[0x74..], start);
            BinaryPrimitives.WriteUInt64LittleEndian(e[0x78..], (ulong)size);
        }
        const uint None = 0xFFFFFFFF;
        Entry(0, "Root Entry", 5, None, None, 1, miniStart < 0 ? 0xFFFFFFFE : (uint)miniStart, mini.Length);
        // Siblings ordered by name length, as the container's directory tree requires.
        Entry(1, streams[0].Name, 2, None, 2, None, (uint)starts[0], streams[0].Data.Length);
        Entry(2, streams[1].Name, 2, None, None, None, (uint)starts[1], streams[1].Data.Length);
        for (int k = 0; k < streams.Length; k++)
            if (!small[k]) streams[k].Data.CopyTo(file, S * (1 + starts[k]));
        return file;
    }
}

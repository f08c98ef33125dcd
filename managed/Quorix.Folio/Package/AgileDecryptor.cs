using System.Buffers.Binary;
using System.Security.Cryptography;
using System.Text;
using System.Xml;

namespace Quorix.Folio.Package;

/// <summary>Opens a password-encrypted package: derives the key from the password, checks it
/// against the stored verifier and decrypts the package segment by segment.</summary>
internal static class AgileDecryptor
{
    private const string PasswordNs = "http://schemas.microsoft.com/office/2006/keyEncryptor/password";
    private static readonly byte[] VerifierInputBlock = { 0xFE, 0xA7, 0xD2, 0x76, 0x3B, 0x4B, 0x9E, 0x79 };
    private static readonly byte[] VerifierValueBlock = { 0xD7, 0xAA, 0x0F, 0x6D, 0x30, 0x61, 0x34, 0x4E };
    private static readonly byte[] KeyValueBlock = { 0x14, 0x6E, 0x0B, 0xE7, 0xAB, 0xAC, 0xD0, 0xD6 };
    private const int SegmentSize = 4096;
    // Well above what word processors use (100,000), low enough that a hostile file cannot stall us.
    private const int MaxSpinCount = 10_000_000;

    private sealed class Params
    {
        public byte[] Salt = Array.Empty<byte>();
        public string Hash = "";
        public int KeyBits;
        public int BlockSize;
        public int HashSize;
        public string Cipher = "";
        public string Chaining = "";
        public int SpinCount;
        public byte[] VerifierInput = Array.Empty<byte>();
        public byte[] VerifierValue = Array.Empty<byte>();
        public byte[] KeyValue = Array.Empty<byte>();
    }

    public static byte[] Decrypt(byte[] container, string password, long limit)
    {
        var cf = CompoundFile.Open(container);
        var info = cf.Get("EncryptionInfo", 1 << 20) ?? throw new FileCorruptedException("The encrypted document has no encryption information.");
        var package = cf.Get("EncryptedPackage", limit) ?? throw new FileCorruptedException("The encrypted document has no encrypted package.");
        if (info.Length < 8) throw new FileCorruptedException("The encryption information is truncated.");
        int major = BinaryPrimitives.ReadUInt16LittleEndian(info), minor = BinaryPrimitives.ReadUInt16LittleEndian(info.AsSpan(2));
        if (major != 4 || minor != 4)
            throw new UnsupportedEncryptionException($"The document uses an encryption scheme (version {major}.{minor}) that cannot be opened; only the agile scheme of current word processors is supported.");
        var (data, key) = ReadParams(info.AsSpan(8));
        Check(data);
        Check(key);
        if (key.SpinCount < 0 || key.SpinCount > MaxSpinCount) throw new FileCorruptedException("The encryption information asks for an unreasonable key derivation.");

        using var hash = HashOf(key.Hash);
        var h = hash.ComputeHash(Concat(key.Salt, Encoding.Unicode.GetBytes(password)));
        var counter = new byte[4 + h.Length];
        for (int i = 0; i < key.SpinCount; i++)
        {
            BinaryPrimitives.WriteInt32LittleEndian(counter, i);
            Buffer.BlockCopy(h, 0, counter, 4, h.Length);
            h = hash.ComputeHash(counter);
        }
        var iv = Fit(key.Salt, key.BlockSize);
        var input = AesCbc(Fit(hash.ComputeHash(Concat(h, VerifierInputBlock)), key.KeyBits / 8), iv, key.VerifierInput);
        var value = AesCbc(Fit(hash.ComputeHash(Concat(h, VerifierValueBlock)), key.KeyBits / 8), iv, key.VerifierValue);
        var expected = hash.ComputeHash(input, 0, Math.Min(input.Length, key.Salt.Length));
        if (value.Length < key.HashSize || !CryptographicOperations.FixedTimeEquals(expected.AsSpan(0, key.HashSize), value.AsSpan(0, key.HashSize)))
            throw new IncorrectPasswordException("The password is incorrect.");
        var secret = AesCbc(Fit(hash.ComputeHash(Concat(h, KeyValueBlock)), key.KeyBits / 8), iv, key.KeyValue)[..(key.KeyBits / 8)];

        if (package.Length < 8) throw new FileCorruptedException("The encrypted package is truncated.");
        long size = BinaryPrimitives.ReadInt64LittleEndian(package);
        if (size < 0 || size > package.Length - 8) throw new FileCorruptedException("The encrypted package is shorter than it claims.");
        using var dataHash = HashOf(data.Hash);
        var output = new byte[size];
        using var aes = Aes.Create();
        aes.Key = secret;
        var index = new byte[data.Salt.Length + 4];
        Buffer.BlockCopy(data.Salt, 0, index, 0, data.Salt.Length);
        for (int seg = 0, off = 8; off < package.Length && (long)seg * SegmentSize < size; seg++, off += SegmentSize)
        {
            int len = Math.Min(SegmentSize, package.Length - off);
            len -= len % data.BlockSize;
            if (len <= 0) break;
            BinaryPrimitives.WriteInt32LittleEndian(index.AsSpan(data.Salt.Length), seg);
            var segIv = Fit(dataHash.ComputeHash(index), data.BlockSize);
            var plain = aes.DecryptCbc(package.AsSpan(off, len), segIv, PaddingMode.None);
            long at = (long)seg * SegmentSize;
            Buffer.BlockCopy(plain, 0, output, (int)at, (int)Math.Min(plain.Length, size - at));
        }
        return output;
    }

    private static void Check(Params p)
    {
        if (p.Cipher != "AES" || (p.Chaining != "" && p.Chaining != "ChainingModeCBC"))
            throw new UnsupportedEncryptionException($"The document is encrypted with {p.Cipher} {p.Chaining}, which is not supported.");
        if (p.KeyBits is not (128 or 192 or 256) || p.BlockSize != 16 || p.Salt.Length == 0)
            throw new FileCorruptedException("The encryption information has invalid key parameters.");
    }

    private static (Params Data, Params Key) ReadParams(ReadOnlySpan<byte> xml)
    {
        var data = new Params();
        Params? key = null;
        var settings = new XmlReaderSettings { DtdProcessing = DtdProcessing.Prohibit, XmlResolver = null, IgnoreWhitespace = true };
        try
        {
            using var r = XmlReader.Create(new MemoryStream(xml.ToArray()), settings);
            while (r.Read())
            {
                if (r.NodeType != XmlNodeType.Element) continue;
                if (r.LocalName == "keyData") Fill(r, data);
                else if (r.LocalName == "encryptedKey" && r.NamespaceURI == PasswordNs)
                {
                    key = new Params();
                    Fill(r, key);
                    key.SpinCount = int.TryParse(r.GetAttribute("spinCount"), out var sc) ? sc : -1;
                    key.VerifierInput = B64(r, "encryptedVerifierHashInput");
                    key.VerifierValue = B64(r, "encryptedVerifierHashValue");
                    key.KeyValue = B64(r, "encryptedKeyValue");
                }
            }
        }
        catch (XmlException e)
        {
            throw new FileCorruptedException("The encryption information is malformed: " + e.Message, e);
        }
        if (key == null) throw new UnsupportedEncryptionException("The document is encrypted with a certificate, not a password.");
        return (data, key);
    }

    private static void Fill(XmlReader r, Params p)
    {
        p.Salt = B64(r, "saltValue");
        p.Hash = r.GetAttribute("hashAlgorithm") ?? "";
        p.KeyBits = int.TryParse(r.GetAttribute("keyBits"), out var kb) ? kb : 0;
        p.BlockSize = int.TryParse(r.GetAttribute("blockSize"), out var bs) ? bs : 0;
        p.HashSize = int.TryParse(r.GetAttribute("hashSize"), out var hs) ? hs : 0;
        p.Cipher = r.GetAttribute("cipherAlgorithm") ?? "";
        p.Chaining = r.GetAttribute("cipherChaining") ?? "";
    }

    private static byte[] B64(XmlReader r, string name)
    {
        try { return Convert.FromBase64String(r.GetAttribute(name) ?? ""); }
        catch (FormatException e) { throw new FileCorruptedException($"The encryption information has a malformed {name}.", e); }
    }

    private static HashAlgorithm HashOf(string name) => name switch
    {
        "SHA1" => SHA1.Create(),
        "SHA256" => SHA256.Create(),
        "SHA384" => SHA384.Create(),
        "SHA512" => SHA512.Create(),
        _ => throw new UnsupportedEncryptionException($"The hash algorithm '{name}' is not supported."),
    };

    private static byte[] AesCbc(byte[] key, byte[] iv, byte[] data)
    {
        if (data.Length == 0 || data.Length % 16 != 0) throw new FileCorruptedException("An encrypted key has an invalid length.");
        using var aes = Aes.Create();
        aes.Key = key;
        return aes.DecryptCbc(data, iv, PaddingMode.None);
    }

    /// <summary>Cuts or pads (with 0x36) to the length a key or IV needs.</summary>
    private static byte[] Fit(byte[] b, int len)
    {
        if (b.Length == len) return b;
        var r = new byte[len];
        Array.Fill(r, (byte)0x36);
        Buffer.BlockCopy(b, 0, r, 0, Math.Min(len, b.Length));
        return r;
    }

    private static byte[] Concat(byte[] a, byte[] b)
    {
        var r = new byte[a.Length + b.Length];
        Buffer.BlockCopy(a, 0, r, 0, a.Length);
        Buffer.BlockCopy(b, 0, r, a.Length, b.Length);
        return r;
    }
}

using System.Buffers;
using System.Buffers.Binary;
using System.Diagnostics.CodeAnalysis;
using System.Runtime.CompilerServices;
using System.Text;
using System.Text.Unicode;
using System.Xml;

namespace Quorix.Folio.Package;

/// <summary>The root element's name, with its namespace resolved.</summary>
internal readonly record struct XmlRootName(string LocalName, string NamespaceUri)
{
    /// <summary>The deepest element's depth as XmlReader counts it (the root is 0).</summary>
    public int MaxDepth { get; init; }
}

/// <summary>
/// Decides whether a part is well-formed the way the engine's XmlReader decides it, without building anything.
/// UTF-8 markup is scanned directly, allocation-free. Whatever the scan finds malformed, or leaves alone, is read
/// again with XmlReader, so a failure carries the reader's own message, line and position, and a construct the scan
/// does not handle costs speed, never correctness.
/// </summary>
internal static class XmlWellFormedness
{
    internal enum ScanVerdict
    {
        WellFormed,
        Malformed,
        /// <summary>The input uses something the scan leaves to XmlReader (another encoding, or a rare construct).</summary>
        NotHandled,
    }

    /// <summary>What the fast scan alone decided; <see cref="Offset"/> and <see cref="Reason"/> say where and why it stopped.</summary>
    internal readonly record struct ScanResult(ScanVerdict Verdict, XmlRootName Root, int Offset, string? Reason);

    private const string XmlNamespace = "http://www.w3.org/XML/1998/namespace";
    private const string XmlnsNamespace = "http://www.w3.org/2000/xmlns/";
    private static ReadOnlySpan<byte> XmlNamespaceUtf8 => "http://www.w3.org/XML/1998/namespace"u8;
    private static ReadOnlySpan<byte> XmlnsNamespaceUtf8 => "http://www.w3.org/2000/xmlns/"u8;

    // Bytes below 0x20 other than tab, LF and CR are not XML characters, wherever they stand.
    private static readonly SearchValues<byte> ControlBytes = SearchValues.Create(
        [0, 1, 2, 3, 4, 5, 6, 7, 8, 0x0B, 0x0C, 0x0E, 0x0F, 0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18, 0x19, 0x1A, 0x1B, 0x1C, 0x1D, 0x1E, 0x1F]);

    /// <summary>Returns the root element's name; throws <see cref="XmlException"/> (with line and position) at the first fault.</summary>
    public static XmlRootName Check(ReadOnlySpan<byte> xml)
    {
        var scan = Scan(xml);
        return scan.Verdict == ScanVerdict.WellFormed ? scan.Root : ReadWithXmlReader(xml);
    }

    /// <summary>The fast scan on its own: never reads with XmlReader.</summary>
    internal static ScanResult Scan(ReadOnlySpan<byte> xml)
    {
        if (OtherEncoding(xml))
            return new ScanResult(ScanVerdict.NotHandled, default, 0, "not UTF-8");
        xml = WithoutPartialTail(xml);
        var scanner = new Scanner(xml);
        try
        {
            var root = scanner.Run();
            return new ScanResult(ScanVerdict.WellFormed, root, 0, null);
        }
        catch (ScanStop stop)
        {
            return new ScanResult(stop.Verdict, default, stop.Offset, stop.Message);
        }
        finally
        {
            scanner.Dispose();
        }
    }

    // Mirrors the settings the document reader parses parts with; the scan reproduces their verdict.
    // A class of its own, so that a load whose parts all pass the scan never sets up the reader.
    private static class Reader
    {
        public static readonly XmlReaderSettings Settings = new()
        {
            DtdProcessing = DtdProcessing.Prohibit,
            XmlResolver = null,
            IgnoreComments = true,
            IgnoreProcessingInstructions = true,
            IgnoreWhitespace = true,
            MaxCharactersFromEntities = 1024,
        };
    }

    /// <returns>The root name as XmlReader reports it; throws XmlReader's exception for a malformed document.</returns>
    private static XmlRootName ReadWithXmlReader(ReadOnlySpan<byte> xml)
    {
        using var reader = XmlReader.Create(new MemoryStream(xml.ToArray(), writable: false), Reader.Settings);
        XmlRootName? root = null;
        int maxDepth = 0;
        while (reader.Read())
        {
            if (reader.NodeType != XmlNodeType.Element) continue;
            root ??= new XmlRootName(reader.LocalName, reader.NamespaceURI);
            maxDepth = Math.Max(maxDepth, reader.Depth);
        }
        return root is { } r ? r with { MaxDepth = maxDepth } : throw new XmlException("Root element is missing.");
    }

    /// <returns>True when XmlReader would decode the bytes as something other than UTF-8 (UTF-16, UTF-32, EBCDIC).</returns>
    private static bool OtherEncoding(ReadOnlySpan<byte> xml)
    {
        if (xml.Length < 2) return false;
        byte a = xml[0], b = xml[1];
        if (a == 0 || b == 0 || a == 0xFE || a == 0xFF) return true;
        return xml.Length >= 4 && a == 0x4C && b == 0x6F && xml[2] == 0xA7 && xml[3] == 0x94;
    }

    /// <summary>
    /// XmlReader never flushes its decoder, so an unfinished but so far valid UTF-8 sequence at the very end
    /// is dropped rather than refused; the scan does the same.
    /// </summary>
    private static ReadOnlySpan<byte> WithoutPartialTail(ReadOnlySpan<byte> xml)
    {
        int lead = xml.Length - 1;
        while (lead >= 0 && lead > xml.Length - 4 && (xml[lead] & 0xC0) == 0x80) lead--;
        if (lead < 0 || xml[lead] < 0xC0) return xml;
        return Rune.DecodeFromUtf8(xml[lead..], out _, out _) == OperationStatus.NeedMoreData ? xml[..lead] : xml;
    }

    /// <returns>The offset of the first byte that is not part of a legal XML character in UTF-8, or -1.</returns>
    private static int FirstBadCharacter(ReadOnlySpan<byte> xml)
    {
        int control = xml.IndexOfAny(ControlBytes);
        if (!Utf8.IsValid(xml))
        {
            int at = 0;
            while (Rune.DecodeFromUtf8(xml[at..], out _, out int n) == OperationStatus.Done) at += n;
            return control >= 0 ? Math.Min(control, at) : at;
        }
        if (control >= 0) return control;
        // U+FFFE and U+FFFF are valid UTF-8 but not XML characters: EF BF BE, EF BF BF.
        int from = 0;
        while (true)
        {
            int i = xml[from..].IndexOf(NonCharacterLead);
            if (i < 0) return -1;
            from += i + 2;
            if (xml[from] >= 0xBE) return from - 2;
        }
    }

    private static ReadOnlySpan<byte> NonCharacterLead => [0xEF, 0xBF];

    private sealed class ScanStop(ScanVerdict verdict, int offset, string reason) : Exception(reason)
    {
        public ScanVerdict Verdict { get; } = verdict;
        public int Offset { get; } = offset;
    }

    [DoesNotReturn, MethodImpl(MethodImplOptions.NoInlining)]
    private static void Fail(int offset, string reason) => throw new ScanStop(ScanVerdict.Malformed, offset, reason);

    [DoesNotReturn, MethodImpl(MethodImplOptions.NoInlining)]
    private static void Leave(int offset, string reason) => throw new ScanStop(ScanVerdict.NotHandled, offset, reason);

    // Name classes of ASCII bytes under namespaces: ':' is neither, it separates prefix and local name.
    private const byte NameStart = 1, NameChar = 2;
    private static readonly byte[] AsciiName = BuildAsciiName();

    private static byte[] BuildAsciiName()
    {
        var t = new byte[128];
        for (int c = 'A'; c <= 'Z'; c++) t[c] = t[c | 0x20] = NameStart | NameChar;
        t['_'] = NameStart | NameChar;
        for (int c = '0'; c <= '9'; c++) t[c] = NameChar;
        t['-'] = t['.'] = NameChar;
        return t;
    }

    [MethodImpl(MethodImplOptions.AggressiveInlining)]
    private static bool IsSpace(byte b) => b <= 0x20 && ((1UL << b) & (1UL << 0x20 | 1UL << 0x09 | 1UL << 0x0A | 1UL << 0x0D)) != 0;

    private static bool IsXmlChar(int c) =>
        c >= 0x20 ? c <= 0xD7FF || (c >= 0xE000 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0x10FFFF) : c is 0x09 or 0x0A or 0x0D;

    // Binding indexes other than entries of the binding table.
    private const int NoNamespace = -1, XmlBinding = -2, XmlnsBinding = -3;

    private struct OpenElement
    {
        public int NameStart, NameLength, BindingMark;
    }

    private struct Binding
    {
        public ulong Key;
        public int PrefixStart, PrefixLength, UriStart, UriLength;
    }

    private struct AttributeEntry
    {
        public ulong LocalKey;
        public int NameStart, Colon, LocalStart, NameEnd, Binding;
    }

    /// <summary>One pass over the markup; the per-element state lives in pooled arrays reused across elements.</summary>
    private ref struct Scanner
    {
        private readonly ReadOnlySpan<byte> _s;
        private OpenElement[] _open;
        private int _depth, _maxDepth;
        private Binding[] _bindings;
        private int _bindingCount;
        private AttributeEntry[] _attrs;
        private int _attrCount;
        // The two prefixes resolved last (nearly every name in a part carries one of very few prefixes);
        // emptied whenever the bindings in scope change.
        private ulong _key0, _key1;
        private int _len0, _len1, _hit0, _hit1;
        // Set by StartTag for the tag just read.
        private int _tagStart, _tagColon, _tagEnd;

        public Scanner(ReadOnlySpan<byte> s)
        {
            _s = s;
            _open = ArrayPool<OpenElement>.Shared.Rent(64);
            _bindings = ArrayPool<Binding>.Shared.Rent(32);
            _attrs = ArrayPool<AttributeEntry>.Shared.Rent(16);
            _len0 = _len1 = -1;
        }

        public void Dispose()
        {
            ArrayPool<OpenElement>.Shared.Return(_open);
            ArrayPool<Binding>.Shared.Return(_bindings);
            ArrayPool<AttributeEntry>.Shared.Return(_attrs);
        }

        /// <summary>The byte at <paramref name="i"/>, or 0 past the end. A real 0 byte is refused by the character check;
        /// only the declaration is read before that check, and there a 0 byte fails just as well.</summary>
        [MethodImpl(MethodImplOptions.AggressiveInlining)]
        private readonly byte Peek(int i) => (uint)i < (uint)_s.Length ? _s[i] : (byte)0;

        [MethodImpl(MethodImplOptions.AggressiveInlining)]
        private readonly int SkipSpace(int p)
        {
            while (IsSpace(Peek(p))) p++;
            return p;
        }

        private readonly bool At(int p, ReadOnlySpan<byte> literal) =>
            (uint)p <= (uint)_s.Length && _s[p..].StartsWith(literal);

        public XmlRootName Run()
        {
            // The declaration comes first: when it names another encoding, the bytes are XmlReader's to judge.
            int p = At(0, [0xEF, 0xBB, 0xBF]) ? 3 : 0;
            if (At(p, "<?xml"u8) && IsSpace(Peek(p + 5))) p = Declaration(p);
            int bad = FirstBadCharacter(_s);
            if (bad >= 0) Fail(bad, "not an XML character");
            p = Prolog(p);
            p = StartTag(p, out bool empty);
            int rootStart = _tagStart, rootColon = _tagColon, rootEnd = _tagEnd;
            int ns = rootColon < 0 ? DefaultBinding() : Resolve(rootStart, rootColon - rootStart);
            int uriStart = 0, uriLength = 0;
            if (ns >= 0) (uriStart, uriLength) = (_bindings[ns].UriStart, _bindings[ns].UriLength);
            if (!empty) p = Content(p);
            Epilog(p);
            int local = rootColon < 0 ? rootStart : rootColon + 1;
            string uri = ns switch
            {
                XmlBinding => XmlNamespace,
                XmlnsBinding => XmlnsNamespace,
                NoNamespace => "",
                _ => Encoding.UTF8.GetString(_s.Slice(uriStart, uriLength)),
            };
            return new XmlRootName(Encoding.UTF8.GetString(_s[local..rootEnd]), uri) { MaxDepth = _maxDepth };
        }

        /// <returns>The offset of the root element's '&lt;', after comments, PIs and whitespace from <paramref name="p"/>.</returns>
        private readonly int Prolog(int p)
        {
            while (true)
            {
                byte b = Peek(p);
                if (IsSpace(b)) { p++; continue; }
                if (b != '<') Fail(p, b == 0 && p >= _s.Length ? "no root element" : "text before the root element");
                byte c = Peek(p + 1);
                if (c == '?') p = ProcessingInstruction(p);
                else if (c == '!') p = CommentOrCData(p);
                else return p;
            }
        }

        /// <summary>After the root: only whitespace, comments and processing instructions, to the end.</summary>
        private readonly void Epilog(int p)
        {
            while (p < _s.Length)
            {
                byte b = _s[p];
                if (IsSpace(b)) { p++; continue; }
                if (b != '<') Fail(p, "text after the root element");
                byte c = Peek(p + 1);
                if (c == '?') p = ProcessingInstruction(p);
                else if (c == '!') p = CommentOrCData(p);
                else Fail(p, "a second root element");
            }
        }

        /// <returns>The offset after the XML declaration at <paramref name="p"/> (known to start "&lt;?xml" and a space).</returns>
        private readonly int Declaration(int p)
        {
            int q = SkipSpace(p + 5);
            if (!At(q, "version"u8)) Fail(q, "declaration without version");
            var value = PseudoAttribute(ref q, 7);
            if (!value.SequenceEqual("1.0"u8))
            {
                // The reader takes "1.0" followed by more, within limits the scan does not model.
                if (value.StartsWith("1.0"u8)) Leave(q, "version with text after 1.0");
                Fail(q, "version other than 1.0");
            }
            int stage = 0;
            while (true)
            {
                int w = q;
                q = SkipSpace(q);
                if (Peek(q) == '?' && Peek(q + 1) == '>') return q + 2;
                if (q == w) Fail(q, "declaration: expected whitespace or '?>'");
                if (stage == 0 && At(q, "encoding"u8))
                {
                    value = PseudoAttribute(ref q, 8);
                    // Another encoding is decoded by XmlReader; so is a misspelt one, which it refuses.
                    if (!Ascii.EqualsIgnoreCase(value, "utf-8"u8)) Leave(q, "encoding other than UTF-8");
                    stage = 1;
                }
                else if (stage < 2 && At(q, "standalone"u8))
                {
                    value = PseudoAttribute(ref q, 10);
                    if (!value.SequenceEqual("yes"u8) && !value.SequenceEqual("no"u8)) Fail(q, "standalone other than yes or no");
                    stage = 2;
                }
                else Fail(q, "declaration: unexpected token");
            }
        }

        /// <returns>The quoted value of the pseudo-attribute whose name (<paramref name="nameLength"/> bytes) starts at q; q moves past it.</returns>
        private readonly ReadOnlySpan<byte> PseudoAttribute(ref int q, int nameLength)
        {
            q = SkipSpace(q + nameLength);
            if (Peek(q) != '=') Fail(q, "declaration: expected '='");
            q = SkipSpace(q + 1);
            byte quote = Peek(q);
            if (quote != '"' && quote != '\'') Fail(q, "declaration: expected a quote");
            int start = q + 1;
            int n = _s[start..].IndexOf(quote);
            if (n < 0) Fail(start, "declaration: unterminated value");
            q = start + n + 1;
            return _s.Slice(start, n);
        }

        /// <returns>The offset after the root element's end tag; <paramref name="p"/> is just past the root's start tag.</returns>
        private int Content(int p)
        {
            var s = _s;
            while (true)
            {
                if (Peek(p) != '<')
                {
                    // Text stops at markup, references, and ']' which might begin a "]]>" (not allowed in text).
                    int i = s[p..].IndexOfAny((byte)'<', (byte)'&', (byte)']');
                    if (i < 0) Fail(s.Length, "unclosed element");
                    p += i;
                    byte b = s[p];
                    if (b == '&') { p = Reference(p); continue; }
                    if (b == ']')
                    {
                        if (Peek(p + 1) == ']' && Peek(p + 2) == '>') Fail(p, "']]>' in text");
                        p++;
                        continue;
                    }
                }
                byte c = Peek(p + 1);
                if (c == '/')
                {
                    p = EndTag(p);
                    if (_depth == 0) return p;
                }
                else if (c == '!') p = CommentOrCData(p);
                else if (c == '?') p = ProcessingInstruction(p);
                else p = StartTag(p, out _);
            }
        }

        /// <returns>The offset after the start tag at <paramref name="p"/>; an element with content is pushed.</returns>
        private int StartTag(int p, out bool empty)
        {
            int nameStart = p + 1;
            int nameEnd = QName(nameStart, out int colon);
            int mark = _bindingCount;
            _attrCount = 0;
            p = nameEnd;
            while (true)
            {
                byte b = Peek(p);
                if (b == '>') { p++; empty = false; break; }
                if (b == '/')
                {
                    if (Peek(p + 1) != '>') Fail(p + 1, "expected '>' after '/'");
                    p += 2;
                    empty = true;
                    break;
                }
                if (!IsSpace(b)) Fail(p, "expected whitespace, '>' or '/>' in a start tag");
                p = SkipSpace(p + 1);
                b = Peek(p);
                if (b == '>' || b == '/') continue;
                p = Attribute(p);
            }
            if (colon >= 0) Resolve(nameStart, colon - nameStart);
            if (_attrCount > 0) CheckAttributes();
            _tagStart = nameStart;
            _tagColon = colon;
            _tagEnd = nameEnd;
            if (_depth > _maxDepth) _maxDepth = _depth;
            if (empty)
            {
                // The root's bindings stay readable for its name; nothing else reads them after this.
                if (_depth > 0) PopBindings(mark);
            }
            else
            {
                if (_depth == _open.Length) Grow(ref _open);
                ref var e = ref _open[_depth++];
                e.NameStart = nameStart;
                e.NameLength = nameEnd - nameStart;
                e.BindingMark = mark;
            }
            return p;
        }

        /// <returns>The offset after the end tag at <paramref name="p"/>, which must close the innermost open element.</returns>
        private int EndTag(int p)
        {
            ref var e = ref _open[_depth - 1];
            int q = p + 2, n = e.NameLength;
            if (q + n > _s.Length || !_s.Slice(q, n).SequenceEqual(_s.Slice(e.NameStart, n)))
                Fail(q, "end tag does not match the start tag");
            q = SkipSpace(q + n);
            if (Peek(q) != '>') Fail(q, "end tag does not match the start tag");
            _depth--;
            PopBindings(e.BindingMark);
            return q + 1;
        }

        /// <returns>The offset after the attribute at <paramref name="p"/>; namespace declarations take effect at once.</returns>
        private int Attribute(int p)
        {
            int nameStart = p;
            int nameEnd = QName(p, out int colon);
            p = SkipSpace(nameEnd);
            if (Peek(p) != '=') Fail(p, "expected '=' after an attribute name");
            p = SkipSpace(p + 1);
            byte quote = Peek(p);
            if (quote != '"' && quote != '\'') Fail(p, "expected a quoted attribute value");
            int valueStart = ++p;
            bool references = false;
            while (true)
            {
                int i = _s[p..].IndexOfAny(quote, (byte)'<', (byte)'&');
                if (i < 0) Fail(_s.Length, "unterminated attribute value");
                p += i;
                byte b = _s[p];
                if (b == quote) break;
                if (b == '<') Fail(p, "'<' in an attribute value");
                references = true;
                p = Reference(p);
            }
            int valueEnd = p;

            if (_attrCount == _attrs.Length)
            {
                // Duplicates are found pairwise; a tag this crowded is left to XmlReader's hashing.
                if (_attrCount >= 256) Leave(nameStart, "too many attributes for the pairwise duplicate check");
                Grow(ref _attrs);
            }
            ref var a = ref _attrs[_attrCount++];
            a.NameStart = nameStart;
            a.Colon = colon;
            a.NameEnd = nameEnd;
            int local = colon < 0 ? nameStart : colon + 1;
            a.LocalStart = local;
            a.LocalKey = Key(local, nameEnd - local);
            a.Binding = NoNamespace;

            if (_s[nameStart] == 'x')
            {
                if (colon < 0 ? nameEnd - nameStart == 5 && At(nameStart, "xmlns"u8) : colon - nameStart == 5 && At(nameStart, "xmlns"u8))
                {
                    a.Binding = XmlnsBinding;
                    Declare(colon < 0 ? nameStart : colon + 1, colon < 0 ? 0 : nameEnd - colon - 1, valueStart, valueEnd, references);
                }
                else if (colon - nameStart == 3 && At(nameStart, "xml:space"u8) && nameEnd - nameStart == 9)
                {
                    if (references) Leave(valueStart, "xml:space value with references");
                    var v = _s[valueStart..valueEnd].Trim(" \t\r\n"u8);
                    if (!v.SequenceEqual("preserve"u8) && !v.SequenceEqual("default"u8)) Fail(valueStart, "xml:space other than preserve or default");
                }
            }
            return p + 1;
        }

        /// <summary>Binds a prefix (length 0: the default namespace) to the value of an xmlns attribute, as the namespace rules allow.</summary>
        private void Declare(int prefixStart, int prefixLength, int valueStart, int valueEnd, bool references)
        {
            var uri = _s[valueStart..valueEnd];
            // A value with references or line breaks is normalized before it becomes a namespace name;
            // declarations never need that in practice, so XmlReader does it.
            if (references || uri.IndexOfAny((byte)'\t', (byte)'\n', (byte)'\r') >= 0)
                Leave(valueStart, "namespace name needing normalization");
            var prefix = _s.Slice(prefixStart, prefixLength);
            bool reserved = uri.SequenceEqual(XmlNamespaceUtf8) || uri.SequenceEqual(XmlnsNamespaceUtf8);
            if (prefix.SequenceEqual("xml"u8))
            {
                if (!uri.SequenceEqual(XmlNamespaceUtf8)) Fail(valueStart, "prefix xml bound to another namespace");
                return;
            }
            if (prefix.SequenceEqual("xmlns"u8)) Fail(prefixStart, "prefix xmlns declared");
            if (reserved) Fail(valueStart, "reserved namespace bound to another prefix");
            if (prefixLength > 0 && uri.Length == 0) Fail(valueStart, "prefix bound to the empty namespace");
            if (_bindingCount == _bindings.Length) Grow(ref _bindings);
            ref var b = ref _bindings[_bindingCount++];
            b.Key = Key(prefixStart, prefixLength);
            b.PrefixStart = prefixStart;
            b.PrefixLength = prefixLength;
            b.UriStart = valueStart;
            b.UriLength = valueEnd - valueStart;
            _len0 = _len1 = -1;
        }

        private void PopBindings(int mark)
        {
            if (_bindingCount == mark) return;
            _bindingCount = mark;
            _len0 = _len1 = -1;
        }

        /// <summary>Every attribute prefix is declared, and no two attributes share a local name and namespace.</summary>
        private void CheckAttributes()
        {
            var attrs = _attrs.AsSpan(0, _attrCount);
            for (int j = 0; j < attrs.Length; j++)
            {
                ref var a = ref attrs[j];
                if (a.Colon >= 0 && a.Binding != XmlnsBinding) a.Binding = Resolve(a.NameStart, a.Colon - a.NameStart);
                int length = a.NameEnd - a.LocalStart;
                for (int i = 0; i < j; i++)
                {
                    ref var o = ref attrs[i];
                    if (o.LocalKey != a.LocalKey || o.NameEnd - o.LocalStart != length) continue;
                    if (length > 8 && !_s.Slice(a.LocalStart, length).SequenceEqual(_s.Slice(o.LocalStart, length))) continue;
                    // Same local name: the same prefix, or two prefixes bound to one namespace name.
                    if (SameName(a, o) || (a.Binding >= 0 && o.Binding >= 0 && SameUri(a.Binding, o.Binding)))
                        Fail(a.NameStart, "duplicate attribute");
                }
            }
        }

        private readonly bool SameName(in AttributeEntry a, in AttributeEntry b) =>
            _s[a.NameStart..a.NameEnd].SequenceEqual(_s[b.NameStart..b.NameEnd]);

        private readonly bool SameUri(int x, int y) =>
            x == y || _s.Slice(_bindings[x].UriStart, _bindings[x].UriLength).SequenceEqual(_s.Slice(_bindings[y].UriStart, _bindings[y].UriLength));

        /// <returns>The binding of the default namespace in scope, or NoNamespace.</returns>
        private readonly int DefaultBinding()
        {
            for (int i = _bindingCount - 1; i >= 0; i--)
                if (_bindings[i].PrefixLength == 0) return i;
            return NoNamespace;
        }

        /// <returns>The binding in scope for the prefix at <paramref name="start"/> (XmlBinding/XmlnsBinding for the predeclared ones); fails if undeclared.</returns>
        [MethodImpl(MethodImplOptions.AggressiveInlining)]
        private int Resolve(int start, int length)
        {
            ulong key = Key(start, length);
            if (length == _len0 && key == _key0 && length <= 8) return _hit0;
            if (length == _len1 && key == _key1 && length <= 8) return _hit1;
            return ResolveSlow(start, length, key);
        }

        private int ResolveSlow(int start, int length, ulong key)
        {
            int found = Lookup(start, length, key);
            if (length <= 8)
            {
                (_key1, _len1, _hit1) = (_key0, _len0, _hit0);
                (_key0, _len0, _hit0) = (key, length, found);
            }
            return found;
        }

        private readonly int Lookup(int start, int length, ulong key)
        {
            var prefix = _s.Slice(start, length);
            if (prefix.SequenceEqual("xml"u8)) return XmlBinding;
            if (prefix.SequenceEqual("xmlns"u8)) return XmlnsBinding;
            for (int i = _bindingCount - 1; i >= 0; i--)
            {
                ref var b = ref _bindings[i];
                if (b.PrefixLength == length && b.Key == key && (length <= 8 || _s.Slice(b.PrefixStart, length).SequenceEqual(prefix)))
                    return i;
            }
            Fail(start, "undeclared prefix");
            return 0;
        }

        /// <returns>Up to the first eight bytes at <paramref name="start"/>, packed; equal keys and lengths up to 8 mean equal bytes.</returns>
        [MethodImpl(MethodImplOptions.AggressiveInlining)]
        private readonly ulong Key(int start, int length)
        {
            if (length <= 0) return 0;
            if (start + 8 <= _s.Length)
            {
                ulong v = BinaryPrimitives.ReadUInt64LittleEndian(_s[start..]);
                return length >= 8 ? v : v & (ulong.MaxValue >> (64 - 8 * length));
            }
            ulong k = 0;
            for (int i = Math.Min(length, 8) - 1; i >= 0; i--) k = k << 8 | _s[start + i];
            return k;
        }

        /// <returns>The offset after a qualified name (NCName, optionally ':' NCName) at <paramref name="p"/>; colon is its offset or -1.</returns>
        private readonly int QName(int p, out int colon)
        {
            int end = NCName(p);
            if (Peek(end) == ':')
            {
                colon = end;
                return NCName(end + 1);
            }
            colon = -1;
            return end;
        }

        /// <returns>The offset after the name (no colon) at <paramref name="p"/>; fails if no name starts there.</returns>
        private readonly int NCName(int p)
        {
            var table = AsciiName;
            byte b = Peek(p);
            if (b < 0x80)
            {
                if ((table[b] & NameStart) == 0) Fail(p, "expected a name");
                p++;
            }
            else
            {
                int n = NonAsciiName(p, NameStart);
                if (n == 0) Fail(p, "expected a name");
                p += n;
            }
            while (true)
            {
                b = Peek(p);
                if (b < 0x80)
                {
                    if ((table[b] & NameChar) == 0) return p;
                    p++;
                }
                else
                {
                    int n = NonAsciiName(p, NameChar);
                    if (n == 0) return p;
                    p += n;
                }
            }
        }

        /// <returns>The length of the UTF-8 sequence at p if it is a name character of the given class, else 0.</returns>
        private readonly int NonAsciiName(int p, byte kind)
        {
            Rune.DecodeFromUtf8(_s[p..], out var rune, out int n);
            // The reader takes no name characters outside the BMP.
            if (rune.Value > 0xFFFF) return 0;
            char c = (char)rune.Value;
            bool ok = kind == NameStart ? XmlConvert.IsStartNCNameChar(c) : XmlConvert.IsNCNameChar(c);
            return ok ? n : 0;
        }

        /// <returns>The offset after the reference at <paramref name="p"/> ('&amp;'): a predefined entity or a character reference to an XML character.</returns>
        private readonly int Reference(int p)
        {
            if (Peek(p + 1) != '#')
            {
                int q = p + 1;
                if (At(q, "amp;"u8)) return q + 4;
                if (At(q, "lt;"u8) || At(q, "gt;"u8)) return q + 3;
                if (At(q, "quot;"u8) || At(q, "apos;"u8)) return q + 5;
                Fail(p, "reference to an undeclared entity");
            }
            int d = p + 2, value = 0;
            bool hex = Peek(d) == 'x';
            if (hex) d++;
            int start = d;
            while (true)
            {
                byte b = Peek(d);
                int digit;
                if ((uint)(b - '0') <= 9) digit = b - '0';
                else if (hex && (uint)((b | 0x20) - 'a') <= 5) digit = (b | 0x20) - 'a' + 10;
                else break;
                value = value * (hex ? 16 : 10) + digit;
                // Past U+10FFFF the reader's verdict depends on how its surrogate split truncates; its call.
                if (value > 0x10FFFF) Leave(p, "character reference past U+10FFFF");
                d++;
            }
            if (d == start || Peek(d) != ';') Fail(d, "malformed character reference");
            if (!IsXmlChar(value)) Fail(p, "character reference to a non-XML character");
            return d + 1;
        }

        /// <returns>The offset after the comment or (inside the root) CDATA section at <paramref name="p"/> ("&lt;!"); anything else fails, a DOCTYPE included.</returns>
        private readonly int CommentOrCData(int p)
        {
            if (Peek(p + 2) == '-' && Peek(p + 3) == '-')
            {
                int start = p + 4;
                int i = _s[start..].IndexOf("--"u8);
                if (i < 0) Fail(_s.Length, "unterminated comment");
                int end = start + i;
                if (Peek(end + 2) != '>') Fail(end, "'--' in a comment");
                return end + 3;
            }
            if (_depth > 0 && At(p + 2, "[CDATA["u8))
            {
                int start = p + 9;
                int i = _s[start..].IndexOf("]]>"u8);
                if (i < 0) Fail(_s.Length, "unterminated CDATA section");
                return start + i + 3;
            }
            Fail(p, _depth > 0 ? "unexpected markup declaration" : "document type declaration or misplaced markup");
            return 0;
        }

        /// <returns>The offset after the processing instruction at <paramref name="p"/> ("&lt;?").</returns>
        private readonly int ProcessingInstruction(int p)
        {
            int t = p + 2;
            int e = NCName(t);
            if (e - t == 3 && (_s[t] | 0x20) == 'x' && (_s[t + 1] | 0x20) == 'm' && (_s[t + 2] | 0x20) == 'l')
                Fail(t, "reserved target 'xml' (or a declaration that is not first)");
            byte b = Peek(e);
            if (b == '?' && Peek(e + 1) == '>') return e + 2;
            if (!IsSpace(b)) Fail(e, "expected whitespace after a processing instruction target");
            int i = _s[(e + 1)..].IndexOf("?>"u8);
            if (i < 0) Fail(_s.Length, "unterminated processing instruction");
            return e + 1 + i + 2;
        }

        private static void Grow<T>(ref T[] array)
        {
            var bigger = ArrayPool<T>.Shared.Rent(array.Length * 2);
            array.AsSpan().CopyTo(bigger);
            ArrayPool<T>.Shared.Return(array);
            array = bigger;
        }
    }
}

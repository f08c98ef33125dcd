using System.Text;
using System.Xml;

namespace Quorix.Folio.Docx;

/// <summary>Collects a run's text. Most runs hold one text element, whose string is then
/// taken as it is; only runs with several pieces pay for concatenation.</summary>
internal sealed class TextBuffer
{
    // A builder that held more than this is dropped rather than cleared: clearing keeps its storage.
    private const int KeptCapacity = 1 << 16;

    private string? single;
    private StringBuilder many = new(256);
    private bool usingMany;
    private readonly char[] chunk = new char[8192];

    public int Length => usingMany ? many.Length : single?.Length ?? 0;

    public void Append(string s)
    {
        if (s.Length == 0) return;
        if (!usingMany && single == null) { single = s; return; }
        Spill();
        many.Append(s);
    }

    public void Append(char c)
    {
        Spill();
        many.Append(c);
    }

    /// <summary>
    /// Appends the value of the reader's current text node, read in chunks: a huge text node is
    /// never held whole in the reader's buffer beside its copy here. A value that fits one chunk
    /// becomes one string, as reading it whole would make.
    /// </summary>
    public void AppendValue(XmlReader r)
    {
        if (!r.CanReadValueChunk)
        {
            Append(r.Value);
            return;
        }
        int filled = 0, n;
        while (filled < chunk.Length && (n = r.ReadValueChunk(chunk, filled, chunk.Length - filled)) > 0)
            filled += n;
        if (filled < chunk.Length)
        {
            if (filled > 0) Append(new string(chunk, 0, filled));
            return;
        }
        Spill();
        many.Append(chunk, 0, filled);
        while ((n = r.ReadValueChunk(chunk, 0, chunk.Length)) > 0)
            many.Append(chunk, 0, n);
    }

    private void Spill()
    {
        if (usingMany) return;
        usingMany = true;
        many.Clear();
        if (single != null) many.Append(single);
        single = null;
    }

    /// <summary>The text so far; the buffer is empty afterwards.</summary>
    public string Take()
    {
        string s = usingMany ? many.ToString() : single ?? "";
        single = null;
        usingMany = false;
        if (many.Capacity > KeptCapacity) many = new StringBuilder(256);
        else many.Clear();
        return s;
    }
}

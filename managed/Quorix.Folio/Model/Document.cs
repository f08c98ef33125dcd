using System.Runtime.ExceptionServices;
using Quorix.Folio.Docx;
using Quorix.Folio.Formats;
using Quorix.Folio.Loading;
using Quorix.Folio.Package;
using Quorix.Folio.Saving;

namespace Quorix.Folio;

/// <summary>A word-processing document: create it empty, or load it from a file or stream.</summary>
public sealed partial class Document : DocumentBase
{
    // Parts read from the source file, written back unchanged unless the model owns them.
    internal OpcPackage? Source;
    internal string? MainPartName;
    // One per format whose reader kept something for its writer; usually none or one.
    private List<FormatSideCar>? sideCars;

    /// <summary>The side-car of that kind, made when first asked for; what the load kept is filled in by the same build.</summary>
    internal T SideCar<T>() where T : FormatSideCar, new()
    {
        if (pending) BuildPending();
        foreach (var s in sideCars ??= new List<FormatSideCar>(1))
            if (s is T found) return found;
        var made = new T();
        sideCars.Add(made);
        return made;
    }
    private Text.LabelCache? labels;

    internal Text.LabelCache Labels => labels ??= new Text.LabelCache(this);

    /// <summary>An empty document: one section with one empty paragraph and the basic styles.</summary>
    public Document()
    {
        Styles.GetOrCreateBuiltIn(StyleIdentifier.Normal);
        Styles.GetOrCreateBuiltIn(StyleIdentifier.DefaultParagraphFont);
        Styles.GetOrCreateBuiltIn(StyleIdentifier.TableNormal);
        Styles.GetOrCreateBuiltIn(StyleIdentifier.NoList);
        Styles.DefaultFont.Name = "Times New Roman";
        Styles.DefaultFont.Size = 12;
        var section = new Section(this);
        section.PageSetup.ApplyDefaults();
        LinkLast(section);
        section.LinkLast(new Body(this));
        section.Body!.LinkLast(new Paragraph(this));
        OriginalLoadFormat = LoadFormat.Docx;
    }

    /// <summary>Opens the document of a file, its format told from its content.</summary>
    [LongRunning]
    public Document(string fileName) : this(fileName, null) { }

    /// <summary>Opens the document of a file as loadOptions say: format, password, callbacks.</summary>
    [LongRunning]

    public Document(string fileName, LoadOptions? loadOptions)
    {
        ArgumentException.ThrowIfNullOrEmpty(fileName);
        using var fs = new FileStream(fileName, FileMode.Open, FileAccess.Read, FileShare.Read, 1 << 16);
        Load(fs, loadOptions, Path.GetFullPath(fileName));
        OriginalFileName = Path.GetFullPath(fileName);
    }

    /// <summary>Reads a document from stream, its format told from its content.</summary>
    [LongRunning]
    public Document(Stream stream) : this(stream, null) { }

    /// <summary>Reads a document from stream as loadOptions say: format, password, callbacks.</summary>
    [LongRunning]

    public Document(Stream stream, LoadOptions? loadOptions)
    {
        ArgumentNullException.ThrowIfNull(stream);
        Load(stream, loadOptions, null);
    }

    // The file name, when there is one, tells formats apart that content alone cannot (Markdown
    // from plain text), and relative references in the file are resolved beside it.
    private void Load(Stream stream, LoadOptions? options, string? fileName)
    {
        options ??= new LoadOptions();
        var format = options.LoadFormat;
        if (format == LoadFormat.Auto)
        {
            // Detection reads ahead and rewinds, which a forward-only stream cannot do.
            if (!stream.CanSeek) stream = new MemoryStream(InputBuffer.ReadAll(stream, options.MaxTotalSize), false);
            format = FileFormatUtil.FormatToLoad(stream, fileName);
        }
        if (fileName != null && options.BaseUri == null)
        {
            options = options.Copy();
            options.BaseUri = Path.GetDirectoryName(fileName);
        }
        var reader = FormatRegistry.ReaderFor(format);
        var progress = options.ProgressCallback;
        progress?.Notify(new DocumentLoadingArgs(0));
        if (progress != null && stream.CanSeek) stream = new LoadProgressStream(stream, progress);
        Warnings.LoadCallback = options.WarningCallback;
        Warnings.Loading = true;
        try
        {
            reader.Read(stream, this, options);
            // The load's callbacks hear of all it does, a deferred build included, and what they
            // throw reaches the caller of the load rather than a later, unrelated call.
            if (pending && (options.WarningCallback != null || options.ResourceLoadingCallback != null || progress != null))
                BuildPending();
        }
        finally
        {
            Warnings.Loading = false;
        }
        OriginalLoadFormat = format;
        progress?.Notify(new DocumentLoadingArgs(100));
    }

    // A reader may check its input now and build the nodes, styles and lists on first use; a
    // document saved untouched can then be written back from what was read.
    private Action<Document>? deferredBuild;

    internal void BuildOnFirstUse(Action<Document> build)
    {
        deferredBuild = build;
        pending = true;
    }

    private ExceptionDispatchInfo? buildError;

    /// <summary>Whether the model of a loaded document has not been built: nothing can have changed it.</summary>
    internal bool Untouched => pending && buildError == null;

    private protected override void BuildPending()
    {
        DocumentGate.Enter(Gate);
        try
        {
            BuildPendingLocked();
        }
        finally
        {
            Monitor.Exit(Gate);
        }
    }

    // Other threads see `pending` until the model is whole; the building thread itself, reaching
    // this again through the model it builds, goes on.
    private bool building;

    private void BuildPendingLocked()
    {
        if (!pending || building) return;
        buildError?.Throw();
        building = true;
        bool wasLoading = Warnings.Loading;
        Warnings.Loading = true;
        try
        {
            deferredBuild!(this);
            pending = false;
        }
        catch (Exception e)
        {
            // What was built so far is dropped, and every later use reports the same damage.
            DropChildren();
            buildError = ExceptionDispatchInfo.Capture(e);
            throw;
        }
        finally
        {
            building = false;
            Warnings.Loading = wasLoading;
        }
    }

    /// <summary>Always Document.</summary>
    public override NodeType NodeType => NodeType.Document;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) =>
        Walk<Document>(visitor, visitor.VisitDocumentStart(this), static (v, n) => v.VisitDocumentEnd(n));

    /// <summary>The file the document was opened from; null when it came from a stream or was new.</summary>
    public string? OriginalFileName { get; private set; }

    /// <summary>The format the document was read in.</summary>
    public LoadFormat OriginalLoadFormat { get; private set; }

    /// <summary>The document's sections.</summary>
    public SectionCollection Sections => new SectionCollection(this);

    /// <summary>The document's first section; null when it has none.</summary>
    public Section? FirstSection => (Section?)GetChild(NodeType.Section, 0, false);

    /// <summary>The document's last section; null when it has none.</summary>
    public Section? LastSection => (Section?)GetChild(NodeType.Section, -1, false);

    /// <summary>Every comment of the document.</summary>
    public CommentCollection Comments => new CommentCollection(this);

    // The core, extended and custom property parts: read from the package on first use.
    private Properties.PropertyParts? propertyParts;

    internal Properties.PropertyParts PropertyParts => propertyParts ??= Properties.PropertyParts.Load(Source);

    /// <summary>The property parts when something asked for them; a save needs no others.</summary>
    internal Properties.PropertyParts? LoadedPropertyParts => propertyParts;

    /// <summary>Title, author, dates, statistics and the other properties every document may carry.</summary>
    public Properties.BuiltInDocumentProperties BuiltInDocumentProperties => new(this);

    /// <summary>The text or picture behind the text of every page.</summary>
    public Watermark Watermark => new(this);

    /// <summary>Properties the document's authors defined by name.</summary>
    public Properties.CustomDocumentProperties CustomDocumentProperties => new(this);

    internal override bool CanHold(Node child) => child is Section;

    /// <summary>Saves to a file in the format its extension names.</summary>
    [LongRunning]
    public SaveOutputParameters Save(string fileName) =>
        Save(fileName, SaveOptions.CreateSaveOptions(FileFormatUtil.ExtensionToSaveFormat(Path.GetExtension(fileName))));

    /// <summary>Saves to a file in saveFormat.</summary>
    [LongRunning]
    public SaveOutputParameters Save(string fileName, SaveFormat saveFormat) => Save(fileName, SaveOptions.CreateSaveOptions(saveFormat));

    /// <summary>Saves to a file in the format and with the options of saveOptions.</summary>
    [LongRunning]
    public SaveOutputParameters Save(string fileName, SaveOptions saveOptions)
    {
        ArgumentException.ThrowIfNullOrEmpty(fileName);
        ArgumentNullException.ThrowIfNull(saveOptions);
        // Written beside the target first, so a failed save never leaves half a file behind.
        var full = Path.GetFullPath(fileName);
        var tmp = full + ".tmp" + Environment.ProcessId + "-" + Environment.CurrentManagedThreadId;
        try
        {
            SaveOutputParameters result;
            using (var fs = new FileStream(tmp, FileMode.Create, FileAccess.ReadWrite, FileShare.None, 1 << 16))
                result = SaveTo(fs, saveOptions, full);
            File.Move(tmp, full, true);
            return result;
        }
        finally
        {
            if (File.Exists(tmp)) File.Delete(tmp);
        }
    }

    /// <summary>Writes the document to stream in saveFormat.</summary>
    [LongRunning]
    public SaveOutputParameters Save(Stream stream, SaveFormat saveFormat) => Save(stream, SaveOptions.CreateSaveOptions(saveFormat));

    /// <summary>Writes the document to stream in the format and with the options of saveOptions.</summary>
    [LongRunning]
    public SaveOutputParameters Save(Stream stream, SaveOptions saveOptions)
    {
        ArgumentNullException.ThrowIfNull(stream);
        ArgumentNullException.ThrowIfNull(saveOptions);
        return SaveTo(stream, saveOptions, null);
    }

    private SaveOutputParameters SaveTo(Stream stream, SaveOptions options, string? path)
    {
        // Saves may run on several threads at once (a host lets other threads run meanwhile):
        // one document is written by one of them at a time.
        DocumentGate.Enter(Gate);
        try
        {
            var writer = FormatRegistry.WriterFor(options.SaveFormat);
            SaveProgress = Saving.SaveProgress.Start(options.ProgressCallback);
            var result = writer.Write(this, stream, options, path);
            SaveProgress?.Done();
            return result;
        }
        finally
        {
            SaveProgress = null;
            Monitor.Exit(Gate);
        }
    }

    /// <summary>The progress reporter of the save under way, for writers that can tell how far they are.</summary>
    internal SaveProgress? SaveProgress { get; private set; }

    /// <summary>A deep copy, independent of this document.</summary>
    public Document Clone() => (Document)CloneTo(null, true);

    internal override Node CloneTo(DocumentBase? target, bool deep)
    {
        if (pending) BuildPending();
        var copy = new Document(empty: true) { Source = Source, MainPartName = MainPartName, OriginalFileName = OriginalFileName, OriginalLoadFormat = OriginalLoadFormat };
        copy.sideCars = sideCars?.ConvertAll(s => s.CloneFor(copy));
        copy.propertyParts = propertyParts?.Clone();
        foreach (var e in Styles.Head) copy.Styles.Head.Add(e.Clone());
        foreach (var s in Styles.All) copy.Styles.AddLoaded(s.Element.Clone());
        foreach (var e in Lists.Head) copy.Lists.Head.Add(e.Clone());
        foreach (var e in Lists.Tail) copy.Lists.Tail.Add(e.Clone());
        foreach (var a in Lists.Abstracts) copy.Lists.Abstracts.Add(a.Clone());
        foreach (var l in Lists.Lists) copy.Lists.AddLoaded(l.Num.Clone());
        if (deep)
        {
            for (var n = first; n != null; n = n.next) copy.LinkLast(n.CloneTo(copy, true));
            Comment.CopyThreads(this, copy);
        }
        return copy;
    }

    private Document(bool empty) { }

    internal static Document CreateEmptyForLoad() => new Document(empty: true);

    /// <summary>Adds the sections of another document at the end of this one.</summary>
    public void AppendDocument(Document srcDoc, ImportFormatMode importFormatMode)
    {
        ArgumentNullException.ThrowIfNull(srcDoc);
        if (srcDoc == this) srcDoc = srcDoc.Clone();
        var importer = new NodeImporterCore(srcDoc, this, importFormatMode);
        foreach (var s in srcDoc.Sections.ToArray())
        {
            var copy = s.CloneTo(this, true);
            importer.Fix(copy);
            LinkLast(copy);
        }
    }

    /// <summary>Marks, as tracked changes by <paramref name="author"/>, what turns this document into
    /// <paramref name="document"/>: accepting them all gives its text, rejecting them all gives this one's.</summary>
    public void Compare(Document document, string author, DateTime dateTime) => Compare(document, author, dateTime, new Comparing.CompareOptions());

    /// <summary>The changes are dated now.</summary>
    public void Compare(Document document, string author) => Compare(document, author, DateTime.UtcNow, new Comparing.CompareOptions());

    /// <summary>Marks the differences from this document to another as tracked changes by author at dateTime.</summary>
    public void Compare(Document document, string author, DateTime dateTime, Comparing.CompareOptions options)
    {
        ArgumentNullException.ThrowIfNull(document);
        ArgumentNullException.ThrowIfNull(author);
        ArgumentNullException.ThrowIfNull(options);
        if (document == this) throw new ArgumentException("A document cannot be compared with itself.", nameof(document));
        new Comparing.DocumentComparer(this, document, author, dateTime, options).Execute();
    }

    /// <summary>Whether the document carries tracked changes.</summary>
    public bool HasRevisions => Revision.Find(this).Count > 0;

    /// <summary>The tracked changes, each of which can be accepted or rejected on its own.</summary>
    public RevisionCollection Revisions => new RevisionCollection(this);

    /// <summary>Makes tracked insertions, deletions, moves and formatting changes final; returns how many were applied.</summary>
    public int AcceptAllRevisions() => Revision.DecideAll(this, accept: true);

    /// <summary>Undoes tracked insertions, deletions, moves and formatting changes; returns how many were undone.</summary>
    public int RejectAllRevisions() => Revision.DecideAll(this, accept: false);

    /// <summary>Adds what an empty document needs to be saved: a section, a body and a paragraph.</summary>
    public void EnsureMinimum()
    {
        var s = LastSection;
        if (s == null)
        {
            s = new Section(this);
            s.PageSetup.ApplyDefaults();
            LinkLast(s);
        }
        s.EnsureMinimum();
    }
}

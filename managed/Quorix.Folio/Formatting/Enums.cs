namespace Quorix.Folio;

/// <summary>How a paragraph's line spacing is read.</summary>
public enum LineSpacingRule
{
    /// <summary>At least the given points; taller lines grow.</summary>
    AtLeast = 0,
    /// <summary>Exactly the given points, whatever the text's size.</summary>
    Exactly = 1,
    /// <summary>A multiple of single spacing, 12 points standing for one line.</summary>
    Multiple = 5,
}

/// <summary>The pattern of a shading.</summary>
public enum TextureIndex
{
    /// <summary>No pattern: the background colour alone.</summary>
    TextureNone = 0,
    /// <summary>The foreground colour alone.</summary>
    TextureSolid = 1,
    /// <summary>10% of the foreground colour over the background.</summary>
    Texture10Percent = 3,
    /// <summary>20% of the foreground colour over the background.</summary>
    Texture20Percent = 4,
    /// <summary>25% of the foreground colour over the background.</summary>
    Texture25Percent = 5,
    /// <summary>50% of the foreground colour over the background.</summary>
    Texture50Percent = 8,
    /// <summary>75% of the foreground colour over the background.</summary>
    Texture75Percent = 10,
}

/// <summary>How styles are resolved when content is copied from another document.</summary>
public enum ImportFormatMode
{
    /// <summary>Styles of the same name take the destination's formatting.</summary>
    UseDestinationStyles = 0,
    /// <summary>The content keeps its look, its styles copied under new names where they clash.</summary>
    KeepSourceFormatting = 1,
    /// <summary>Styles that differ are copied under new names; identical ones are shared.</summary>
    KeepDifferentStyles = 2,
}

/// <summary>How a row's height is read.</summary>
public enum HeightRule
{
    /// <summary>At least the given height; taller content grows the row.</summary>
    AtLeast = 0,
    /// <summary>Exactly the given height; content that does not fit is cut.</summary>
    Exactly = 1,
    /// <summary>As tall as its content.</summary>
    Auto = 2,
}

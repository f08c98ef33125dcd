namespace Quorix.Folio;

public enum LineSpacingRule
{
    AtLeast = 0,
    Exactly = 1,
    Multiple = 5,
}

public enum TextureIndex
{
    TextureNone = 0,
    TextureSolid = 1,
    Texture10Percent = 3,
    Texture20Percent = 4,
    Texture25Percent = 5,
    Texture50Percent = 8,
    Texture75Percent = 10,
}

public enum ImportFormatMode
{
    UseDestinationStyles = 0,
    KeepSourceFormatting = 1,
    KeepDifferentStyles = 2,
}

public enum HeightRule
{
    AtLeast = 0,
    Exactly = 1,
    Auto = 2,
}

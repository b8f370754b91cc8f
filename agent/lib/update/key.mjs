/**
 * The key that every release is verified with: Ed25519, SPKI, DER, base64. Its private half is with whoever makes
 * releases (scripts/make-release). Nothing outside of this file can name another.
 */
export const RELEASE_PUBLIC_KEY = 'MCowBQYDK2VwAyEA9hvu2VlB6UHfl6Pjnc5jPB78M/cIzAlNIDaZaTu8zac=';

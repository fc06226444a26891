;;; nebgit-trust.el --- Which repositories are trusted  -*- lexical-binding: t; -*-

;; SPDX-License-Identifier: MIT

;;; Commentary:

;; A repository can name programs that git runs, such as filters and hooks.  In one that is not
;; trusted, the server inspects: none of these programs runs, and nothing can be changed.

;;; Code:

(require 'cl-lib)

(defcustom nebgit-trusted-folders t
  "Folders whose repositories are trusted; t means all repositories.
In repositories elsewhere, git runs none of the programs that they name, and
nothing can be changed.  A function gets the top folder of a working copy, and
returns whether it is trusted."
  :type '(choice (const :tag "All repositories" t) (repeat :tag "Those below" directory) function)
  :group 'nebgit)

(defvar nebgit-trust--roots nil
  "Working copies that were trusted since Emacs started.")

(defun nebgit-inspected-p (root)
  "Return non-nil if the working copy ROOT is not trusted."
  (not (cond ((eq nebgit-trusted-folders t) t)
             ((member (file-name-as-directory root) nebgit-trust--roots) t)
             ((functionp nebgit-trusted-folders) (funcall nebgit-trusted-folders root))
             (t (cl-some (lambda (folder) (file-in-directory-p root folder))
                         nebgit-trusted-folders)))))

(provide 'nebgit-trust)
;;; nebgit-trust.el ends here

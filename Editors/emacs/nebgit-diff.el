;;; nebgit-diff.el --- Hunks as text and as patches  -*- lexical-binding: t; -*-

;; SPDX-License-Identifier: MIT

;;; Commentary:

;; Turns the records of type 1004 into a unified diff, as diff(1) and git-diff(1) write it: to show
;; it, and to send single hunks as the patches of the types 1005 to 1007.

;;; Code:

(require 'diff-mode)
(require 'nebgit-request)

(defun nebgit-diff-range (start count)
  "Return START and COUNT as in the first line of a hunk."
  (if (eql count 1) (format "%d" start) (format "%d,%d" start count)))

(defun nebgit-diff-hunk-header (hunk)
  "Return the first line of HUNK, without the newline."
  (let ((heading (nebgit-field hunk Heading)))
    (concat (format "@@ -%s +%s @@"
                    (nebgit-diff-range (nebgit-field hunk OldStart) (nebgit-field hunk OldCount))
                    (nebgit-diff-range (nebgit-field hunk NewStart) (nebgit-field hunk NewCount)))
            (and heading (concat " " (nebgit-decode heading))))))

(defun nebgit-diff-lines (hunk)
  "Return the lines of HUNK as a list of strings."
  (mapcar #'nebgit-decode (nebgit-field hunk Lines)))

(defun nebgit-diff--quoted (prefix name)
  "Return PREFIX and NAME as git writes a path in a patch: quoted if necessary."
  (let ((path (concat prefix name)))
    (if (string-match-p "[\0-\x1f\"\\\x7f[:nonascii:]]" path)
        (concat "\""
                (mapconcat (lambda (byte)
                             (if (or (< byte 32) (> byte 126) (memq byte '(?\" ?\\)))
                                 (format "\\%03o" byte)
                               (string byte)))
                           (encode-coding-string path 'utf-8-unix) "")
                "\"")
      path)))

(defun nebgit-diff-file-header (file)
  "Return the lines before the hunks of FILE, a record of type 1004.
They have the form that git-apply(1) reads."
  (let* ((path (nebgit-name file Path))
         (old (or (nebgit-name file OriginalPath) path))
         (state (nebgit-field file State))
         (old-mode (nebgit-field file OldMode))
         (new-mode (nebgit-field file NewMode))
         (a (nebgit-diff--quoted "a/" old))
         (b (nebgit-diff--quoted "b/" path)))
    (concat
     (format "diff --git %s %s\n" a b)
     (cond
      ((equal state "added") (format "new file mode %s\n" new-mode))
      ((equal state "deleted") (format "deleted file mode %s\n" old-mode))
      ((and old-mode new-mode (not (equal old-mode new-mode)))
       (format "old mode %s\nnew mode %s\n" old-mode new-mode)))
     (when (member state '("renamed" "copied"))
       (let ((verb (if (equal state "renamed") "rename" "copy")))
         (format "%s from %s\n%s to %s\n" verb (nebgit-diff--quoted "" old)
                 verb (nebgit-diff--quoted "" path))))
     (when (nebgit-list (nebgit-field file Hunks))
       (concat "--- " (nebgit-diff--label (if (equal state "added") "/dev/null" a))
               "+++ " (nebgit-diff--label (if (equal state "deleted") "/dev/null" b)))))))

(defun nebgit-diff--label (name)
  "Return NAME as the end of a line with ---; a tab ends a name with spaces."
  (concat name (and (string-match-p " " name) (not (string-prefix-p "\"" name)) "\t") "\n"))

(defun nebgit-diff-change-p (line)
  "Return t if LINE of a hunk is an added or removed one."
  (and (> (length line) 0) (memq (aref line 0) '(?+ ?-)) t))

(defun nebgit-diff-part (hunk chosen reverse)
  "Return HUNK with those changed lines only for which the list CHOSEN has t.
REVERSE means that its patch is taken back: the other added lines stay, and the
other removed ones are missing; otherwise it is the other way round."
  (let ((kept (if reverse ?+ ?-)) (left t) lines)
    (cl-loop for line in (nebgit-diff-lines hunk)
             for is-chosen in chosen
             ;; A line about a missing newline belongs to the line before it.
             do (cond ((string-prefix-p "\\" line))
                      ((or is-chosen (not (nebgit-diff-change-p line))) (setq left t))
                      ((eq (aref line 0) kept) (setq left t
                                                     line (concat " " (substring line 1))))
                      (t (setq left nil)))
             (when left (push line lines)))
    (setq lines (nreverse lines))
    (when (nebgit-diff--joins-lines-p lines kept)
      (user-error "The last line of the file has no newline; select the whole hunk"))
    (append (list :NEBSourceControlOperationLinesKey (vconcat lines)
                  :NEBSourceControlOperationOldCountKey (nebgit-diff--count lines ?+)
                  :NEBSourceControlOperationNewCountKey (nebgit-diff--count lines ?-))
            hunk)))

(defun nebgit-diff--joins-lines-p (lines removed)
  "Return non-nil if one of LINES, but the last, has no newline in the result.
Lines that begin with the character REMOVED are not part of that."
  (memq t (butlast (cl-loop for (line next) on lines
                            unless (memq (aref line 0) (list removed ?\\))
                            collect (string-prefix-p "\\" (or next ""))))))

(defun nebgit-diff--count (lines other)
  "Return the number of LINES that do not begin with the character OTHER.
Lines about a missing newline are not counted."
  (cl-count-if-not (lambda (line) (memq (aref line 0) (list other ?\\))) lines))

(defun nebgit-diff--placed (hunk offset reverse)
  "Return HUNK with the line numbers that it has after hunks that add OFFSET lines.
REVERSE means that its patch is taken back.  The start of an empty range is the
line before it."
  (let* ((old-empty (if (eql (nebgit-field hunk OldCount) 0) 1 0))
         (new-empty (if (eql (nebgit-field hunk NewCount) 0) 1 0))
         (old-start (+ (nebgit-field hunk NewStart) (- new-empty old-empty offset)))
         (new-start (+ (nebgit-field hunk OldStart) (- old-empty new-empty) offset)))
    (append (if reverse
                (list :NEBSourceControlOperationOldStartKey old-start)
              (list :NEBSourceControlOperationNewStartKey new-start))
            hunk)))

(defun nebgit-diff-patch (file hunks reverse &optional partial)
  "Return a patch of some HUNKS of FILE, a record of type 1004.
It changes neither the mode nor the name of the file.  REVERSE means that it is
taken back: git searches a hunk at the line that its heading names.  With
PARTIAL, from `nebgit-diff-part', it neither creates nor deletes the file."
  (let ((state (nebgit-field file State)) (offset 0))
    (concat (nebgit-diff-file-header
             (append (when (or partial (not (member state '("added" "deleted"))))
                       '(:NEBSourceControlOperationStateKey "modified"
                         :NEBSourceControlOperationOldModeKey nil
                         :NEBSourceControlOperationNewModeKey nil
                         :NEBSourceControlOperationOriginalPathKey nil
                         :NEBSourceControlOperationOriginalPathBytesKey nil))
                     file))
            (mapconcat
             (lambda (hunk)
               (prog1 (concat (nebgit-diff-hunk-header (nebgit-diff--placed hunk offset reverse))
                              "\n" (mapconcat (lambda (line) (concat line "\n"))
                                              (nebgit-diff-lines hunk) ""))
                 (cl-incf offset (- (nebgit-field hunk NewCount) (nebgit-field hunk OldCount)))))
             hunks ""))))

(defun nebgit-diff-insert (files)
  "Insert FILES, records of type 1004, as a diff."
  (dolist (file files)
    (insert (nebgit-diff-file-header file))
    (when (nebgit-field file IsBinary)
      (insert "Binary files differ\n"))
    (mapc (lambda (hunk)
            (insert (nebgit-diff-hunk-header hunk) "\n")
            (dolist (line (nebgit-diff-lines hunk))
              (insert line "\n")))
          (nebgit-field file Hunks))))

(defun nebgit-diff-face (line)
  "Return the face of LINE of a hunk."
  (pcase (and (> (length line) 0) (aref line 0))
    (?+ 'diff-added)
    (?- 'diff-removed)
    (?\\ 'shadow)
    (_ 'diff-context)))

(provide 'nebgit-diff)
;;; nebgit-diff.el ends here
